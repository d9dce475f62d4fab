#include "support/VirtualMainQueue.h"

#include <utility>

namespace valdorn {

void VirtualMainQueue::post(Task task) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
}

ScheduledTask VirtualMainQueue::after(std::chrono::milliseconds delay, Task task) {
    return deadlines_.arm(now_ + delay, std::nullopt, std::move(task));
}

ScheduledTask VirtualMainQueue::every(std::chrono::milliseconds period, Task task) {
    return deadlines_.arm(now_ + period, period, std::move(task));
}

bool VirtualMainQueue::runOne() {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (posted_.empty())
            return false;
        task = std::move(posted_.front());
        posted_.pop_front();
    }
    task();
    return true;
}

void VirtualMainQueue::runPosted() {
    do {
        for (Task& task : deadlines_.takeDue(now_))
            post(std::move(task));
    } while (runOne());
}

void VirtualMainQueue::advance(std::chrono::milliseconds step) {
    const TimePoint end = now_ + step;
    runPosted();
    while (deadlines_.next() && *deadlines_.next() <= end) {
        now_ = *deadlines_.next();
        runPosted();
    }
    now_ = end;
}

std::size_t VirtualMainQueue::pending() const {
    const std::lock_guard lock(mutex_);
    return posted_.size() + deadlines_.size();
}

}  // namespace valdorn
