#pragma once

#include <string>
#include <vector>

#include "simulation/ModelLoop.h"

namespace valdorn::simulation {

// The search for a bar that shows the status item, by its table.
class ModelTraySearch {
public:
    explicit ModelTraySearch(ModelLoop& loop) : loop_(loop) {}
    ~ModelTraySearch() { ModelLoop::cancel(timer_); }
    ModelTraySearch(const ModelTraySearch&) = delete;
    ModelTraySearch& operator=(const ModelTraySearch&) = delete;

    std::vector<std::string> told;  // "notifier", "xembed", "missing", "appeared"

    bool isStarted() const { return state_ != State::idle; }
    void start();
    void setHosts(bool notifier, bool xembed);

private:
    enum class State { idle, searching, shown, lost, missing };

    bool isLastThere() const { return wasNotifier_ ? notifier_ : xembed_; }
    bool isWelcomeThere() const;
    void look();
    void take(bool isNotifier);
    void wait(State state);
    void timeIsOver();
    void secondThoughtsAreOver();

    ModelLoop& loop_;
    State state_ = State::idle;
    bool notifier_ = false;
    bool xembed_ = false;
    bool wasNotifier_ = true;  // the kind that was taken last
    ModelLoop::Handle timer_;
};

// The launch and what is asked for before it, by its table.
class ModelGate {
public:
    explicit ModelGate(ModelLoop& loop) : loop_(loop) {}
    ~ModelGate() { ModelLoop::cancel(patience_); }
    ModelGate(const ModelGate&) = delete;
    ModelGate& operator=(const ModelGate&) = delete;

    std::vector<std::string> done;  // "launch", and the names of requests

    void awaitRequest() { isAwaited_ = true; }
    void ready();
    void request(const std::string& name);
    void close();

private:
    enum class State { held, awaiting, launched, closed };

    void launch();

    ModelLoop& loop_;
    State state_ = State::held;
    bool isAwaited_ = false;
    std::vector<std::string> kept_;
    ModelLoop::Handle patience_;
};

}  // namespace valdorn::simulation
