#include "platform/DeadlineQueue.h"

namespace valdorn {

class DeadlineQueue::Entry : public ScheduledTask::Control {
public:
    Entry(std::weak_ptr<DeadlineQueue*> queue, MainQueue::Task task,
          std::optional<std::chrono::milliseconds> repeatAfter)
        : period(repeatAfter),
          queue_(std::move(queue)),
          task_(std::make_shared<MainQueue::Task>(std::move(task))) {}

    void cancel() override {
        if (const auto queue = queue_.lock())
            (*queue)->armed_.erase(armed);
        task_.reset();
    }

    void run() {
        // Held for the call: the task may cancel itself.
        if (const auto task = period ? task_ : std::move(task_))
            (*task)();
    }

    const std::optional<std::chrono::milliseconds> period;
    Key armed;  // its place in the queue, or the last that it had; places are never given twice

private:
    std::weak_ptr<DeadlineQueue*> queue_;
    std::shared_ptr<MainQueue::Task> task_;
};

DeadlineQueue::DeadlineQueue() : self_(std::make_shared<DeadlineQueue*>(this)) {}

DeadlineQueue::~DeadlineQueue() {
    self_.reset();
}

void DeadlineQueue::insert(TimePoint deadline, std::shared_ptr<Entry> entry) {
    const Key key{deadline, armings_++};
    entry->armed = key;
    armed_.emplace(key, std::move(entry));
}

ScheduledTask DeadlineQueue::arm(TimePoint deadline,
                                 std::optional<std::chrono::milliseconds> period,
                                 MainQueue::Task task) {
    auto entry = std::make_shared<Entry>(self_, std::move(task), period);
    insert(deadline, entry);
    return ScheduledTask(entry);
}

std::optional<DeadlineQueue::TimePoint> DeadlineQueue::next() const {
    if (armed_.empty())
        return std::nullopt;
    return armed_.begin()->first.first;
}

std::vector<MainQueue::Task> DeadlineQueue::takeDue(TimePoint now) {
    std::vector<MainQueue::Task> due;
    while (!armed_.empty() && armed_.begin()->first.first <= now) {
        const auto entry = armed_.begin()->second;
        armed_.erase(armed_.begin());
        // Counted from now, not from the missed deadline: what was missed is not made up for.
        if (entry->period)
            insert(now + *entry->period, entry);
        due.emplace_back([entry] { entry->run(); });
    }
    return due;
}

}  // namespace valdorn
