#include "simulation/ModelTray.h"

#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

constexpr Millis waitingTime = 30000;
constexpr Millis secondThoughts = 1000;
constexpr Millis requestPatience = 2000;

}  // namespace

// A notifier host is always welcome; one of the other kind where the item was before.
bool ModelTraySearch::isWelcomeThere() const {
    return notifier_ || isLastThere();
}

void ModelTraySearch::start() {
    wait(State::searching);
    look();
}

void ModelTraySearch::setHosts(bool notifier, bool xembed) {
    notifier_ = notifier;
    xembed_ = xembed;
    look();
}

void ModelTraySearch::look() {
    if (state_ == State::shown && !isLastThere()) {
        reached<"tray lost">();
        wait(State::lost);
    }
    if (state_ == State::idle || state_ == State::shown)
        return;
    if (isWelcomeThere())
        return take(notifier_);
    if (state_ == State::missing && xembed_) {
        if (timer_)
            reached<"tray that came, went and came again">();
        ModelLoop::cancel(timer_);
        timer_ = loop_.after(secondThoughts, [this] { secondThoughtsAreOver(); });
    }
}

void ModelTraySearch::take(bool isNotifier) {
    const State before = state_;
    ModelLoop::cancel(timer_);
    state_ = State::shown;
    wasNotifier_ = isNotifier;
    told.emplace_back(isNotifier ? "notifier" : "xembed");
    if (!isNotifier)
        reached<"tray of the old kind">();
    if (before == State::missing) {
        reached<"tray after all">();
        told.emplace_back("appeared");
    }
}

void ModelTraySearch::wait(State state) {
    ModelLoop::cancel(timer_);
    state_ = state;
    timer_ = loop_.after(waitingTime, [this] { timeIsOver(); });
}

void ModelTraySearch::timeIsOver() {
    timer_.reset();
    if (notifier_ || xembed_)
        return take(notifier_);
    reached<"no tray">();
    state_ = State::missing;
    told.emplace_back("missing");
}

void ModelTraySearch::secondThoughtsAreOver() {
    timer_.reset();
    if (notifier_ || xembed_)
        take(notifier_);
}

void ModelGate::ready() {
    if (state_ != State::held)
        return;
    if (!isAwaited_ || !kept_.empty())
        return launch();
    state_ = State::awaiting;
    patience_ = loop_.after(requestPatience, [this] {
        reached<"launched without the request">();
        launch();
    });
}

void ModelGate::launch() {
    ModelLoop::cancel(patience_);
    state_ = State::launched;
    done.emplace_back("launch");
    done.insert(done.end(), kept_.begin(), kept_.end());
    kept_.clear();
}

void ModelGate::request(const std::string& name) {
    switch (state_) {
        case State::held:
            reached<"request kept for the launch">();
            return kept_.push_back(name);
        case State::awaiting:
            kept_.push_back(name);
            return launch();
        case State::launched:
            return done.push_back(name);
        case State::closed:
            return reached<"request after the end">();
    }
}

void ModelGate::close() {
    ModelLoop::cancel(patience_);
    kept_.clear();
    state_ = State::closed;
}

}  // namespace valdorn::simulation
