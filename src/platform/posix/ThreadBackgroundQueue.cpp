#include "platform/posix/ThreadBackgroundQueue.h"

#include <system_error>
#include <utility>

namespace valdorn {

ThreadBackgroundQueue::ThreadBackgroundQueue()
    : ThreadBackgroundQueue(
          [](std::function<void()> body) { return std::thread(std::move(body)); }) {}

ThreadBackgroundQueue::ThreadBackgroundQueue(ThreadMaker makeThread)
    : makeThread_(std::move(makeThread)) {}

ThreadBackgroundQueue::~ThreadBackgroundQueue() {
    std::unique_lock lock(mutex_);
    // Until nothing is left: a task may have added another.
    while (!running_.empty() || !waiting_.empty()) {
        ended_.wait(lock, [this] { return running_.empty(); });
        runWaiting(lock);
    }
    join(std::exchange(over_, {}));
}

void ThreadBackgroundQueue::run(Task task) {
    Threads ended;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(task));
        startThreads();
        ended.swap(over_);
    }
    join(std::move(ended));
}

std::size_t ThreadBackgroundQueue::threads() const {
    const std::lock_guard lock(mutex_);
    return running_.size() + over_.size();
}

// Makes as many threads as there are tasks that nobody is on the way to.
void ThreadBackgroundQueue::startThreads() {
    while (starting_ < waiting_.size()) {
        const auto self = running_.emplace(running_.end());
        try {
            *self = makeThread_([this, self] { work(self); });
        } catch (const std::system_error&) {
            running_.erase(self);
            return;
        }
        ++starting_;
    }
}

void ThreadBackgroundQueue::work(Threads::iterator self) {
    std::unique_lock lock(mutex_);
    --starting_;
    runWaiting(lock);
    over_.splice(over_.end(), running_, self);
    ended_.notify_all();
}

// Runs what waits, without the lock, until nothing does.
void ThreadBackgroundQueue::runWaiting(std::unique_lock<std::mutex>& lock) {
    while (!waiting_.empty()) {
        Task task = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

void ThreadBackgroundQueue::join(Threads ended) {
    for (std::thread& thread : ended)
        thread.join();
}

}  // namespace valdorn
