#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include "platform/BackgroundQueue.h"

namespace valdorn {

// A thread for each task: tasks are few and may block for long. A thread that has ended is joined
// at the next run(), so ended threads do not pile up; none is ever detached.
//
// When the system refuses a thread, the task waits for the next thread of ours to end, or for the
// next run() to get one; destruction runs on its own thread what still waits then.
class ThreadBackgroundQueue : public BackgroundQueue {
public:
    // Makes a thread that calls `body` once; throws std::system_error when there is none to have.
    using ThreadMaker = std::function<std::thread(std::function<void()> body)>;

    ThreadBackgroundQueue();
    explicit ThreadBackgroundQueue(ThreadMaker makeThread);
    // Joins; not to be called from a task.
    ~ThreadBackgroundQueue() override;

    void run(Task task) override;

    // Any thread. How many threads have not been joined.
    std::size_t threads() const;

private:
    using Threads = std::list<std::thread>;

    void startThreads();
    void work(Threads::iterator self);
    void runWaiting(std::unique_lock<std::mutex>& lock);
    static void join(Threads ended);

    const ThreadMaker makeThread_;

    // Below: guarded by mutex_.
    mutable std::mutex mutex_;
    std::condition_variable ended_;  // a thread has moved from running_ to over_
    std::deque<Task> waiting_;
    std::size_t starting_ = 0;  // threads that have yet to look for a task
    Threads running_;
    Threads over_;  // to be joined; they need nothing of ours any more
};

}  // namespace valdorn
