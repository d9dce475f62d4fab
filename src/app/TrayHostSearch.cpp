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

bool TrayHostSearch::isThere(TrayHost host) const {
    return host == TrayHost::xembed ? probes_.xembed() : probes_.notifier();
}

void TrayHostSearch::hostsChanged() {
    if (state_ == State::idle || (state_ == State::shown && isThere(host_)))
        return;
    if (state_ == State::shown)
        wait(State::lost);
    if (probes_.notifier())
        show(TrayHost::notifier);
    else if (isThere(host_))
        show(host_);
    else if (state_ == State::missing && probes_.xembed())
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
    for (const TrayHost host : {TrayHost::notifier, TrayHost::xembed}) {
        if (isThere(host))
            return show(host);
    }
}

void TrayHostSearch::show(TrayHost host) {
    timer_.cancel();
    const State before = std::exchange(state_, State::shown);
    host_ = host;
    callbacks_.onHostThere(host);
    if (before == State::missing)
        callbacks_.onHostAppeared();
}

}  // namespace valdorn
