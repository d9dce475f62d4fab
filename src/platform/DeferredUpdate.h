#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/MainQueue.h"

namespace valdorn {

// Looks again after changes that are announced before they are stored: however many requests one
// turn of the main queue brings, the action runs once, in a task of its own after them. Dropping
// this calls off what has not run; the action may do so itself. Main thread only.
class DeferredUpdate {
public:
    // The queue outlives this.
    DeferredUpdate(MainQueue& queue, std::function<void()> action)
        : queue_(queue), state_(std::make_shared<State>(State{std::move(action), false})) {}
    DeferredUpdate(const DeferredUpdate&) = delete;
    DeferredUpdate& operator=(const DeferredUpdate&) = delete;

    void request() {
        if (std::exchange(state_->isRequested, true))
            return;
        queue_.post([weak = std::weak_ptr(state_)] {
            const auto state = weak.lock();
            if (!state)
                return;
            state->isRequested = false;
            state->action();
        });
    }

private:
    struct State {
        const std::function<void()> action;
        bool isRequested;
    };

    MainQueue& queue_;
    const std::shared_ptr<State> state_;
};

}  // namespace valdorn
