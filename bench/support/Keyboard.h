#pragma once

#include <QApplication>
#include <QKeyEvent>
#include <QSocketNotifier>
#include <QWidget>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

namespace valdorn {

// Presses a key every few milliseconds and keeps how long it took until a shown widget had handled
// it. The press comes the way a display server's does: over a socket that the event loop watches.
class Keyboard {
public:
    using Clock = std::chrono::steady_clock;
    using Microseconds = std::chrono::duration<long long, std::micro>;

    Keyboard() {
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_) != 0)
            std::abort();
        notifier_ = std::make_unique<QSocketNotifier>(sockets_[0], QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { deliver(); });
        window_.show();
        presser_ = std::thread([this] { pressKeys(); });
    }
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;
    ~Keyboard() {
        stop();
        for (const int end : sockets_)
            close(end);
    }

    // How long each answer took.
    std::vector<Microseconds> stop() {
        isStopping_ = true;
        if (presser_.joinable())
            presser_.join();
        return window_.answers;
    }

private:
    class Window : public QWidget {
    public:
        std::vector<Microseconds> answers;
        Clock::time_point pressed;

    protected:
        void keyPressEvent(QKeyEvent*) override {
            answers.push_back(std::chrono::duration_cast<Microseconds>(Clock::now() - pressed));
        }
    };

    void pressKeys() {
        std::mt19937 random(1);
        while (!isStopping_) {
            std::this_thread::sleep_for(std::chrono::microseconds(3000 + random() % 6000));
            const auto now = Clock::now();
            if (send(sockets_[1], &now, sizeof now, 0) < 0)
                return;  // thousands of keys wait: the answers that are there say enough
        }
    }

    void deliver() {
        while (recv(sockets_[0], &window_.pressed, sizeof window_.pressed, 0) > 0) {
            QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
            QCoreApplication::sendEvent(&window_, &key);
        }
    }

    int sockets_[2] = {-1, -1};
    Window window_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::atomic<bool> isStopping_ = false;
    std::thread presser_;
};

}  // namespace valdorn
