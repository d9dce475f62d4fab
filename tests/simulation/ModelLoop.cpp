#include "simulation/ModelLoop.h"

#include <algorithm>
#include <utility>

namespace valdorn::simulation {

void ModelLoop::cancel(Handle& handle) {
    if (!handle)
        return;
    handle->isOff = true;
    const Task dropped = std::exchange(handle->task, nullptr);
    handle.reset();
}

ModelLoop::Handle ModelLoop::arm(Millis delay, std::optional<Millis> period, Task task) {
    alarms_.push_back(std::make_shared<Alarm>(Alarm{now_ + delay, period, std::move(task)}));
    return alarms_.back();
}

void ModelLoop::takeDue() {
    std::erase_if(alarms_, [](const Handle& alarm) { return alarm->isOff; });
    std::vector<Handle> due;
    for (const Handle& alarm : alarms_) {
        if (alarm->deadline <= now_)
            due.push_back(alarm);
    }
    std::stable_sort(due.begin(), due.end(), [](const Handle& one, const Handle& other) {
        return one->deadline < other->deadline;
    });
    for (const Handle& alarm : due) {
        std::erase(alarms_, alarm);
        if (alarm->period) {
            alarm->deadline = now_ + *alarm->period;
            alarms_.push_back(alarm);
        }
        posted_.emplace_back([alarm] {
            if (alarm->isOff)
                return;
            const Task task = alarm->period ? alarm->task : std::exchange(alarm->task, nullptr);
            task();
        });
    }
}

bool ModelLoop::runOne() {
    if (posted_.empty())
        return false;
    const Task task = std::move(posted_.front());
    posted_.pop_front();
    task();
    return true;
}

void ModelLoop::run() {
    do
        takeDue();
    while (runOne());
}

void ModelLoop::advance(Millis step) {
    const Millis end = now_ + step;
    run();
    while (next() && *next() <= end) {
        now_ = *next();
        run();
    }
    now_ = end;
}

std::size_t ModelLoop::armed() const {
    return static_cast<std::size_t>(std::count_if(
        alarms_.begin(), alarms_.end(), [](const Handle& alarm) { return !alarm->isOff; }));
}

std::optional<Millis> ModelLoop::next() const {
    std::optional<Millis> earliest;
    for (const Handle& alarm : alarms_) {
        if (!alarm->isOff && (!earliest || alarm->deadline < *earliest))
            earliest = alarm->deadline;
    }
    return earliest;
}

std::size_t ModelLoop::dueWithin(Millis step) const {
    return static_cast<std::size_t>(std::count_if(
        alarms_.begin(), alarms_.end(),
        [&](const Handle& alarm) { return !alarm->isOff && alarm->deadline <= now_ + step; }));
}

}  // namespace valdorn::simulation
