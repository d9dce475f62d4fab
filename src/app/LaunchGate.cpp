#include "app/LaunchGate.h"

#include <utility>

namespace valdorn {

LaunchGate::LaunchGate(MainQueue& mainQueue, std::function<void()> launch)
    : mainQueue_(mainQueue), launch_(std::move(launch)) {}

void LaunchGate::ready() {
    if (state_ != State::held)
        return;
    if (!isRequestAwaited_ || !requests_.empty()) {
        launch();
        return;
    }
    state_ = State::awaiting;
    patience_ = mainQueue_.after(requestPatience, [this] { launch(); });
}

void LaunchGate::request(std::function<void()> task) {
    if (state_ == State::launched) {
        task();
        return;
    }
    if (state_ == State::closed)
        return;
    requests_.push_back(std::move(task));
    if (state_ == State::awaiting)
        launch();
}

void LaunchGate::launch() {
    patience_.cancel();
    state_ = State::launched;
    launch_();
    for (const auto& request : std::exchange(requests_, {})) {
        if (state_ == State::launched)
            request();
    }
}

void LaunchGate::close() {
    state_ = State::closed;
    patience_.cancel();
    requests_.clear();
}

}  // namespace valdorn
