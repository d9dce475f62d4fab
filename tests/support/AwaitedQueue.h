#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "support/VirtualMainQueue.h"

namespace valdorn {

// Plays the main thread while real threads post to it.
class AwaitedQueue : public VirtualMainQueue {
public:
    void post(Task task) override {
        VirtualMainQueue::post(std::move(task));
        const std::lock_guard lock(mutex_);
        isPosted_ = true;
        posted_.notify_one();
    }

    // Runs what is posted until the condition holds; false when nothing is posted for that long. The
    // condition is looked at again after each post only.
    template <typename Condition>
    bool runUntil(const Condition& condition,
                  std::chrono::seconds patience = std::chrono::seconds(60)) {
        for (runPosted(); !condition(); runPosted()) {
            std::unique_lock lock(mutex_);
            if (!posted_.wait_for(lock, patience, [this] { return isPosted_; }))
                return false;
            isPosted_ = false;
        }
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable posted_;
    bool isPosted_ = false;  // guarded by mutex_
};

}  // namespace valdorn
