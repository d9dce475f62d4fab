#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace valdorn::simulation {

// Milliseconds on the steady clock, from the beginning of the simulated process.
using Millis = std::int64_t;

// The model's own idea of a main queue: what is posted runs in posting order, and what is due joins
// the end of it. Kept as plain lists that are searched, so that nothing is shared with the real one.
class ModelLoop {
public:
    using Task = std::function<void()>;

    // An armed task; whoever holds it may cancel it.
    struct Alarm {
        Millis deadline = 0;
        std::optional<Millis> period;
        Task task;
        bool isOff = false;
    };
    using Handle = std::shared_ptr<Alarm>;

    void post(Task task) { posted_.push_back(std::move(task)); }

    // Runs `task` when `delay` has passed; the loop alone keeps it.
    Handle after(Millis delay, Task task) { return arm(delay, std::nullopt, std::move(task)); }
    Handle every(Millis period, Task task) { return arm(period, period, std::move(task)); }

    // The task will not run; its closure goes at once. Harmless on an empty handle, which it leaves.
    static void cancel(Handle& handle);

    Millis now() const { return now_; }

    // Runs what is posted and due, and what that posts.
    void run();
    // The same, and everything that becomes due until `step` has passed.
    void advance(Millis step);
    // Time passes while nothing runs.
    void stall(Millis step) { now_ += step; }

    // How many tasks are armed.
    std::size_t armed() const;
    // The earliest deadline.
    std::optional<Millis> next() const;
    // How many are due when `step` has passed.
    std::size_t dueWithin(Millis step) const;

private:
    Handle arm(Millis delay, std::optional<Millis> period, Task task);
    void takeDue();
    bool runOne();

    std::deque<Task> posted_;
    std::vector<Handle> alarms_;  // in arming order
    Millis now_ = 0;
};

}  // namespace valdorn::simulation
