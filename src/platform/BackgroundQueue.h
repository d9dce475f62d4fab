#pragma once

#include <functional>

namespace valdorn {

// Runs blocking work off the main thread.
//
// Tasks may run at the same time as one another: one that never ends delays no other. Outcomes go
// back through MainQueue::post. Destruction joins: it waits until every task has returned, so
// whoever owns the queue first ends what its tasks wait for (ChildLauncher::shutDown).
class BackgroundQueue {
public:
    using Task = std::function<void()>;

    BackgroundQueue() = default;
    BackgroundQueue(const BackgroundQueue&) = delete;
    BackgroundQueue& operator=(const BackgroundQueue&) = delete;
    virtual ~BackgroundQueue() = default;

    // Any thread. Takes ownership of the task and returns at once. The task, which must not throw,
    // is destroyed on the thread that ran it.
    virtual void run(Task task) = 0;
};

}  // namespace valdorn
