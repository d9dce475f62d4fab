#include "platform/qt/QuitSignals.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <atomic>
#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace valdorn {

namespace {

// Where the handler writes to; a signal handler has nothing but globals to know it from.
std::atomic<int> wakeUpPipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

// Whom the end of the process is told to; null while there is nobody.
QuitSignals* present = nullptr;

void onSignal(int) {
    const int savedError = errno;
    const char byte = 0;
    // A full pipe means that the wake-up is already on its way.
    [[maybe_unused]] const auto written = write(wakeUpPipe, &byte, 1);
    errno = savedError;
}

}  // namespace

QuitSignals::QuitSignals(std::function<void()> onQuit, std::function<void()> onExit)
    : onQuit_(std::move(onQuit)), onExit_(std::move(onExit)) {
    assert(!present);
    present = this;
    [[maybe_unused]] static const int registered = std::atexit([] {
        if (present)
            present->leave();
    });
    openPipe();
    installHandlers();
    // The session manager asks first whether all is saved (nothing to do, nothing to object to)
    // and ends the program afterwards, when no other program has cancelled the logout. With the
    // autostart entry there is no need to be restored as well.
    connect(
        qGuiApp, &QGuiApplication::commitDataRequest, this,
        [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::aboutToQuit, this, [this] { tell(); });
}

QuitSignals::~QuitSignals() {
    for (const int number : signals_)
        std::signal(number, SIG_IGN);
    present = nullptr;
    wakeUpPipe = -1;
    notifier_.reset();
    close(pipe_[0]);
    close(pipe_[1]);
}

void QuitSignals::openPipe() {
    if (pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    wakeUpPipe = pipe_[1];
    notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        while (read(pipe_[0], bytes.data(), bytes.size()) > 0) {
        }
        tell();
    });
}

void QuitSignals::installHandlers() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : signals_) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (number != SIGHUP || before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

void QuitSignals::tell() {
    if (const auto onQuit = std::exchange(onQuit_, nullptr))
        onQuit();
}

void QuitSignals::leave() {
    tell();
    onExit_();
    // What is still to be destroyed belongs to an event loop that will not come back.
    std::_Exit(EXIT_FAILURE);
}

}  // namespace valdorn
