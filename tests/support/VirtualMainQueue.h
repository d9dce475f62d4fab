#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <mutex>

#include "platform/DeadlineQueue.h"
#include "platform/MainQueue.h"

namespace valdorn {

// A main queue whose clock stands still until a test moves it. The thread that calls advance() or
// runPosted() plays the main thread; post() may come from any thread.
class VirtualMainQueue : public MainQueue {
public:
    void post(Task task) override;
    ScheduledTask after(std::chrono::milliseconds delay, Task task) override;
    ScheduledTask every(std::chrono::milliseconds period, Task task) override;
    TimePoint now() const override { return now_; }

    // Runs what is posted, and what that posts, until nothing is left. Time stands still.
    void runPosted();

    // Runs what is posted, then jumps from deadline to deadline until `step` has passed.
    void advance(std::chrono::milliseconds step);

    // Time passes while the main thread is held up: what has become due waits for runPosted().
    void stall(std::chrono::milliseconds step) { now_ += step; }

    // Tasks posted and tasks armed that have not run: 0 proves that the program sleeps.
    std::size_t pending() const;

    // Tasks armed for a later time.
    std::size_t armed() const { return deadlines_.size(); }

private:
    bool runOne();

    mutable std::mutex mutex_;
    std::deque<Task> posted_;
    DeadlineQueue deadlines_;
    TimePoint now_{};
};

}  // namespace valdorn
