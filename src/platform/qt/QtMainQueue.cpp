#include "platform/qt/QtMainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <limits>
#include <utility>

namespace valdorn {

namespace {

using std::chrono::milliseconds;

// Half a frame at 60 Hz: the event loop draws and reads input at least every other frame even
// while tasks never end, and its own cost stays small beside the tasks'.
constexpr milliseconds sliceLength{8};

constexpr auto wakeUp = static_cast<QEvent::Type>(QEvent::User + 1);

// Rounded up, and cut to what QTimer can count: a timer that fires too soon finds nothing due and
// is set again, at the cost of one more wake-up.
milliseconds timerInterval(std::chrono::nanoseconds left) {
    const auto rounded = std::chrono::ceil<milliseconds>(left);
    return std::clamp(rounded, milliseconds{0}, milliseconds{std::numeric_limits<int>::max()});
}

}  // namespace

// Passes cancelling on, and lets the timer rest when what it was set for is gone.
class QtMainQueue::ArmedTask : public ScheduledTask::Control {
public:
    ArmedTask(std::weak_ptr<QtMainQueue*> queue, ScheduledTask task)
        : queue_(std::move(queue)), task_(std::move(task)) {}
    ~ArmedTask() override { task_.detach(); }

    void cancel() override {
        task_.cancel();
        if (const auto queue = queue_.lock())
            (*queue)->setTimer();
    }

private:
    std::weak_ptr<QtMainQueue*> queue_;
    ScheduledTask task_;
};

QtMainQueue::QtMainQueue() : self_(std::make_shared<QtMainQueue*>(this)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] {
        timerIsFor_.reset();
        enqueue(deadlines_.takeDue(now()));
        setTimer();
    });
}

QtMainQueue::~QtMainQueue() {
    self_.reset();
    std::deque<Task> dropped;
    const std::lock_guard lock(mutex_);
    dropped.swap(posted_);
}

void QtMainQueue::wakeEventLoop() {
    // The lowest priority: painting, which Qt posts at low priority too, is not overtaken.
    QCoreApplication::postEvent(this, new QEvent(wakeUp), Qt::LowEventPriority);
}

void QtMainQueue::post(Task task) {
    bool asleep = false;
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(task));
        asleep = !std::exchange(awake_, true);
    }
    if (asleep)
        wakeEventLoop();
}

void QtMainQueue::enqueue(std::vector<Task> due) {
    for (Task& task : due)
        post(std::move(task));
}

ScheduledTask QtMainQueue::after(milliseconds delay, Task task) {
    return arm(now() + delay, std::nullopt, std::move(task));
}

ScheduledTask QtMainQueue::every(milliseconds period, Task task) {
    return arm(now() + period, period, std::move(task));
}

ScheduledTask QtMainQueue::arm(TimePoint deadline, std::optional<milliseconds> period, Task task) {
    auto armed = deadlines_.arm(deadline, period, std::move(task));
    setTimer();
    return ScheduledTask(std::make_shared<ArmedTask>(self_, std::move(armed)));
}

void QtMainQueue::setTimer() {
    const auto next = deadlines_.next();
    if (next == timerIsFor_)
        return;
    timerIsFor_ = next;
    if (next)
        timer_.start(timerInterval(*next - now()));
    else
        timer_.stop();
}

void QtMainQueue::customEvent(QEvent* event) {
    if (event->type() == wakeUp)
        runSlice();
}

bool QtMainQueue::runNext() {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        awake_ = !posted_.empty();
        if (!awake_)
            return false;
        task = std::move(posted_.front());
        posted_.pop_front();
    }
    task();
    return true;
}

void QtMainQueue::runSlice() {
    const TimePoint end = now() + sliceLength;
    while (runNext()) {
        const TimePoint moment = now();
        enqueue(deadlines_.takeDue(moment));
        if (moment >= end)
            return wakeEventLoop();
    }
    setTimer();
}

}  // namespace valdorn
