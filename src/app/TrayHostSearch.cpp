#include "app/TrayHostSearch.h"

#include <utility>

namespace valdorn {

TrayHostSearch::TrayHostSearch(MainQueue& mainQueue, Probes probes, Callbacks callbacks)
    : mainQueue_(mainQueue), probes_(std::move(probes)), callbacks_(std::move(callbacks)) {}

void TrayHostSearch::start() {
    wait(State::searching);
    hostsChanged();
}

void TrayHostSearch::wait(State state) {
    state_ = state;
    timer_ = mainQueue_.after(waitingTime, [this] { onWaitingTimeOver(); });
}

bool TrayHostSearch::isHostThere() const {
    return host_ == TrayHost::xembed ? probes_.xembed() : probes_.notifier();
}

void TrayHostSearch::hostsChanged() {
    const bool there = state_ != State::idle && isHostThere();
    if (state_ == State::shown && !there)
        wait(State::lost);
    else if (state_ != State::shown && there)
        show(host_);
    else if (state_ == State::missing && !found_ && probes_.xembed())
        timer_ = mainQueue_.after(secondThoughts, [this] { takeAnyHost(); });
}

void TrayHostSearch::onWaitingTimeOver() {
    takeAnyHost();
    if (state_ == State::shown)
        return;
    state_ = State::missing;
    callbacks_.onHostMissing();
}

void TrayHostSearch::takeAnyHost() {
    if (isHostThere())
        show(host_);
    else if (!found_ && probes_.xembed())
        show(TrayHost::xembed);
}

void TrayHostSearch::show(TrayHost host) {
    timer_.cancel();
    const State before = std::exchange(state_, State::shown);
    host_ = host;
    found_ = true;
    callbacks_.onHostThere(host);
    if (before == State::missing)
        callbacks_.onHostAppeared();
}

}  // namespace valdorn
