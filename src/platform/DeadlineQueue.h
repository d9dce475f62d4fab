#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/MainQueue.h"

namespace valdorn {

// The armed tasks of a main queue, ordered by deadline and then by arming. Pure bookkeeping that
// every MainQueue shares, so that real and virtual time agree on order. Main thread only.
//
// A task that is due is taken out to be queued; it can still be cancelled until it runs.
class DeadlineQueue {
public:
    using TimePoint = MainQueue::TimePoint;

    DeadlineQueue();
    DeadlineQueue(const DeadlineQueue&) = delete;
    DeadlineQueue& operator=(const DeadlineQueue&) = delete;
    ~DeadlineQueue();

    // Arms a task for `deadline`; with a period it is armed again each time it has been taken.
    ScheduledTask arm(TimePoint deadline, std::optional<std::chrono::milliseconds> period,
                      MainQueue::Task task);

    // The earliest deadline, or nothing when nothing is armed.
    std::optional<TimePoint> next() const;

    // Takes out every task whose deadline has come, in order, each as a closure to be run later.
    std::vector<MainQueue::Task> takeDue(TimePoint now);

    // How many tasks are armed.
    std::size_t size() const { return armed_.size(); }

private:
    class Entry;
    using Key = std::pair<TimePoint, std::uint64_t>;

    void insert(TimePoint deadline, std::shared_ptr<Entry> entry);

    std::map<Key, std::shared_ptr<Entry>> armed_;
    std::uint64_t armings_ = 0;
    std::shared_ptr<DeadlineQueue*> self_;  // empty for entries that outlive the queue
};

}  // namespace valdorn
