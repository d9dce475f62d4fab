#pragma once

#include <QObject>
#include <QTimer>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/DeadlineQueue.h"
#include "platform/MainQueue.h"

namespace valdorn {

// The main queue on the Qt event loop of the thread that makes it, which is the main thread.
//
// A long burst is run in slices, and the event loop gets its turn between two slices, so that
// input, timers and painting never wait for the end of a burst. A task that opens an event loop of
// its own holds up the other tasks for as long: tasks run one at a time.
// The application object outlives the queue.
class QtMainQueue : public QObject, public MainQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;

    void post(Task task) override;
    ScheduledTask after(std::chrono::milliseconds delay, Task task) override;
    ScheduledTask every(std::chrono::milliseconds period, Task task) override;
    TimePoint now() const override { return std::chrono::steady_clock::now(); }

protected:
    void customEvent(QEvent* event) override;

private:
    class ArmedTask;

    void enqueue(std::vector<Task> due);
    void wakeEventLoop();
    bool runNext();
    void runSlice();
    ScheduledTask arm(TimePoint deadline, std::optional<std::chrono::milliseconds> period,
                      Task task);
    void setTimer();

    // Main thread only.
    DeadlineQueue deadlines_;
    QTimer timer_{this};                   // runs only while something is armed
    std::optional<TimePoint> timerIsFor_;  // the deadline that the timer was set for
    std::shared_ptr<QtMainQueue*> self_;   // empty for handles that outlive the queue

    // Below: guarded by mutex_.
    std::mutex mutex_;
    std::deque<Task> posted_;
    bool awake_ = false;  // a wake-up is on its way, or a slice is running
};

}  // namespace valdorn
