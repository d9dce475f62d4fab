#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace valdorn {

// A task that runs later on the main thread. Movable handle, owned by whoever may want to cancel.
//
// Thread: main thread only. Dropping the handle cancels the task, so a closure that captures its
// owner cannot outlive it by accident; detach() lets the task run without a handle.
class [[nodiscard]] ScheduledTask {
public:
    // What the queue keeps for one armed task.
    class Control {
    public:
        Control() = default;
        Control(const Control&) = delete;
        Control& operator=(const Control&) = delete;
        virtual ~Control() = default;
        // Disarms the task and destroys its closure. A second call, or a call after the task ran,
        // does nothing. Called from inside the task itself, it ends a repeating task.
        virtual void cancel() = 0;
    };

    ScheduledTask() = default;
    explicit ScheduledTask(std::shared_ptr<Control> control) : control_(std::move(control)) {}
    ScheduledTask(ScheduledTask&&) noexcept = default;
    ScheduledTask& operator=(ScheduledTask&& other) noexcept {
        if (this != &other) {
            cancel();
            control_ = std::move(other.control_);
        }
        return *this;
    }
    ScheduledTask(const ScheduledTask&) = delete;
    ScheduledTask& operator=(const ScheduledTask&) = delete;
    ~ScheduledTask() { cancel(); }

    // The task will not run any more. Harmless when it has run, or on an empty handle.
    void cancel() {
        if (auto control = std::move(control_))
            control->cancel();
    }

    // Lets the task run although nobody holds it; the queue owns its closure until then.
    void detach() { control_.reset(); }

private:
    std::shared_ptr<Control> control_;
};

// The main thread's queue of tasks, and the only source of time in the program.
//
// Order: tasks run one at a time, in posting order, and never before post() has returned to its
// caller, even when the poster is on the main thread. A task whose delay has passed joins the end
// of the queue at that moment; equal deadlines join in the order in which they were armed.
// Time: the steady clock. A delay never ends early; suspending the computer or setting the wall
// clock does not end one early either. A delay of zero or less is due at once.
// Idle cost: a burst of posts costs one wake-up of the event loop, and when nothing is posted or
// armed there is no wake-up at all.
// Shutdown: tasks that have not run when the queue is destroyed are dropped unrun; their closures
// are destroyed with the queue, on the main thread. Posting to a destroyed queue is an error of
// the caller: the composition root joins every other thread before it drops the queue.
// Exceptions: a task must not throw.
class MainQueue {
public:
    using Task = std::function<void()>;
    using TimePoint = std::chrono::steady_clock::time_point;

    MainQueue() = default;
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;
    virtual ~MainQueue() = default;

    // Any thread. Takes ownership of the task; returns before it runs and never blocks on it.
    virtual void post(Task task) = 0;

    // Main thread. Runs `task` once when `delay` has passed, unless the handle is cancelled or
    // dropped before.
    [[nodiscard]] virtual ScheduledTask after(std::chrono::milliseconds delay, Task task) = 0;

    // Main thread. Runs `task` each time `period` (at least 1 ms) has passed, the first time after
    // one period. Periods that passed while the main thread was busy are not made up for.
    [[nodiscard]] virtual ScheduledTask every(std::chrono::milliseconds period, Task task) = 0;

    // Main thread. The steady time that deadlines are counted on.
    virtual TimePoint now() const = 0;
};

}  // namespace valdorn
