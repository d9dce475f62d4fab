#pragma once

#include <cstddef>
#include <deque>
#include <utility>

#include "platform/BackgroundQueue.h"

namespace valdorn {

// Runs its tasks when told to, on the calling thread. One thread only. Tasks that were never run
// are dropped at the end.
class ManualBackgroundQueue : public BackgroundQueue {
public:
    void run(Task task) override { tasks_.push_back(std::move(task)); }

    // How many tasks wait.
    std::size_t count() const { return tasks_.size(); }

    // Runs the oldest task and destroys it; false when there is none.
    bool runNext() {
        if (tasks_.empty())
            return false;
        runAt(0);
        return true;
    }

    // Runs the task of that index, the oldest being 0, before the others, and destroys it.
    void runAt(std::size_t index) {
        const Task task = std::move(tasks_.at(index));
        tasks_.erase(tasks_.begin() + static_cast<std::ptrdiff_t>(index));
        task();
    }

    // Runs tasks, and those that they add, until none is left.
    void runAll() {
        while (runNext()) {
        }
    }

private:
    std::deque<Task> tasks_;
};

}  // namespace valdorn
