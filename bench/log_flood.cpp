// Shows a log that grows as fast as a disk takes it: log_flood MILLISECONDS KEYS.
//
// The log window is watched and closed for that long each; then as many keys are typed into its filter
// and taken away again, at random times. Prints how many MiB a second the log has grown by; how often
// the rows were painted while the window was watched and while it was closed; the wake-ups of the event
// loop while it was closed; the shortest time between two paintings while it was watched; and, for each
// key, how long it took until it was seen. Times are nanoseconds.
#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "support/BusyLog.h"
#include "support/LogWindow.h"

namespace valdorn {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Writes to a log at 100 MB a second, from a thread of its own, until this is gone.
class Flood {
public:
    explicit Flood(BusyLog& log) : log_(log), thread_([this] { write(); }) {}
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;
    ~Flood() {
        isOver_ = true;
        thread_.join();
    }

    long long mebibytes() const { return written_ / (1 << 20); }

private:
    void write() {
        constexpr milliseconds pace{10};
        constexpr std::size_t bytes = 1'000'000;
        std::string text = busyText(0, 10'000);
        text.resize(bytes);
        text.back() = '\n';
        for (auto next = Clock::now(); !isOver_; std::this_thread::sleep_until(next += pace)) {
            log_.append(text);
            written_ += bytes;
        }
    }

    BusyLog& log_;
    std::atomic<bool> isOver_ = false;
    std::atomic<long long> written_ = 0;
    std::thread thread_;  // the last: it uses the others
};

// Notes when a widget is painted.
class Paintings : public QObject {
public:
    explicit Paintings(QWidget& widget) { widget.installEventFilter(this); }

    std::vector<Clock::time_point> take() { return std::exchange(times_, {}); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            times_.push_back(Clock::now());
        return QObject::eventFilter(watched, event);
    }

private:
    std::vector<Clock::time_point> times_;
};

long long nanoseconds(Clock::duration duration) {
    return std::chrono::nanoseconds(duration).count();
}

long long shortestGap(const std::vector<Clock::time_point>& times) {
    Clock::duration shortest = std::chrono::hours(1);
    for (std::size_t at = 1; at < times.size(); ++at)
        shortest = std::min(shortest, times[at] - times[at - 1]);
    return nanoseconds(shortest);
}

void wait(milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// Presses a key from another thread at random times, as a display server does, and keeps how long it
// took until the field was painted with it.
class Typist {
public:
    explicit Typist(QLineEdit& field) : field_(field), paintings_(field) {}

    std::vector<long long> type(int keys) {
        std::thread hand([this, keys] { press(keys); });
        std::vector<long long> answers;
        while (answers.size() < static_cast<std::size_t>(keys)) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            if (paintings_.take().empty())
                continue;
            for (const Clock::time_point pressed : std::exchange(pressed_, {}))
                answers.push_back(nanoseconds(Clock::now() - pressed));
        }
        hand.join();
        return answers;
    }

private:
    // Letters, as far as they are in many lines, and back again.
    static QString letter(int key) {
        static const QString text = QStringLiteral("docker exec");
        const auto place = static_cast<qsizetype>(key) % (2 * text.size());
        return place < text.size() ? QString(text.at(place)) : QString();
    }

    void press(int keys) {
        std::mt19937 random(1);
        std::uniform_int_distribution<int> pause(5, 35);
        for (int key = 0; key < keys; ++key) {
            std::this_thread::sleep_for(milliseconds(pause(random)));
            QMetaObject::invokeMethod(
                &field_, [this, key, pressed = Clock::now()] { take(letter(key), pressed); },
                Qt::QueuedConnection);
        }
    }

    void take(const QString& letter, Clock::time_point pressed) {
        pressed_.push_back(pressed);
        const Qt::Key key = letter.isEmpty() ? Qt::Key_Backspace : Qt::Key_unknown;
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&field_, &down);
    }

    QLineEdit& field_;
    Paintings paintings_;
    std::vector<Clock::time_point> pressed_;  // not yet seen
};

void measure(milliseconds time, int keys) {
    BusyLog log(LogTailer::maxLines);
    LogWindow window(log.path());
    auto& filter = *window.view->findChild<QLineEdit*>();
    Paintings paintings(*window.rows->viewport());
    Flood flood(log);

    wait(time);
    const auto speed = flood.mebibytes() * 1000 / time.count();
    const auto watched = paintings.take();

    window.view->hide();
    settle();
    paintings.take();
    int wakeUps = 0;
    const auto awake = QObject::connect(QAbstractEventDispatcher::instance(),
                                        &QAbstractEventDispatcher::awake, [&] { ++wakeUps; });
    wait(time);
    QObject::disconnect(awake);
    const auto closed = paintings.take();

    window.view->show();
    settle();
    const auto answers = Typist(filter).type(keys);
    constexpr int endOfWaiting = 1;
    std::printf("%lld %zu %zu %d %lld", speed, watched.size(), closed.size(),
                wakeUps - endOfWaiting, shortestGap(watched));
    for (const long long answer : answers)
        std::printf(" %lld", answer);
    std::printf("\n");
}

}  // namespace

}  // namespace valdorn

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    QApplication application(count, arguments);
    valdorn::measure(std::chrono::milliseconds(std::atoi(arguments[1])), std::atoi(arguments[2]));
}
