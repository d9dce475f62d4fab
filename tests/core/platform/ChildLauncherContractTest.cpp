#include <cerrno>
#include <csignal>
#include <deque>
#include <map>

#include "contracts/ChildLauncherContract.h"
#include "support/MemoryChildLauncher.h"

namespace valdorn {

namespace {

// Plays children on the launcher without processes. They react to signals only here: a scripted
// child does what its test says and nothing else.
class MemoryStage {
public:
    ChildLauncher& launcher() { return *launcher_; }
    void destroyLauncher() { launcher_.reset(); }

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildPlay& play,
                                                              ChildHandlers handlers) {
        auto launched = launcher_->launch({}, std::move(handlers));
        if (launched) {
            const std::int64_t id = launched.value()->id();
            actors_[id] = {&launcher_->child(launcher_->childCount() - 1), {}};
            actors_[id].rest.assign(play.begin(), play.end());
            goOn(actors_[id]);
        }
        return launched;
    }

    Result<ChildExit, LaunchError> run(const ChildPlay& play,
                                       const std::function<void(std::string_view)>& onOutput) {
        ScriptedRun script;
        for (const ChildStep& step : play) {
            if (step.kind == ChildStep::Kind::print)
                script.chunks.push_back(step.text);
            if (step.kind == ChildStep::Kind::exit)
                script.exit.number = step.number;
        }
        launcher_->runScript.emplace_back(std::move(script));
        return launcher_->run({}, onOutput);
    }

    Result<std::unique_ptr<ChildProcess>, LaunchError> launchNothing(ChildHandlers handlers) {
        launcher_->failNextLaunch = LaunchError{LaunchError::Step::execute, ENOENT, "/nothing"};
        return launcher_->launch({}, std::move(handlers));
    }

    void nudge(std::int64_t id) { goOn(actors_.at(id)); }

    bool waitForEnd(ChildProcess& process) {
        ScriptedChild& child = *actors_.at(process.id()).child;
        if (child.terminateRequests() > 0)
            child.end({ChildExit::Kind::signalled, SIGTERM});
        return !process.isRunning();
    }

private:
    struct Actor {
        ScriptedChild* child = nullptr;
        std::deque<ChildStep> rest;
    };

    static void goOn(Actor& actor) {
        while (!actor.rest.empty()) {
            const ChildStep step = actor.rest.front();
            actor.rest.pop_front();
            if (step.kind == ChildStep::Kind::await)
                return;
            act(*actor.child, step);
        }
    }

    static void act(ScriptedChild& child, const ChildStep& step) {
        if (step.kind == ChildStep::Kind::print)
            child.print(step.text);
        if (step.kind == ChildStep::Kind::fill)
            child.print(std::string(static_cast<std::size_t>(step.number), 'x'));
        if (step.kind == ChildStep::Kind::exit)
            child.end({ChildExit::Kind::exited, step.number});
        if (step.kind == ChildStep::Kind::raise)
            child.end({ChildExit::Kind::signalled, step.number});
    }

    std::unique_ptr<MemoryChildLauncher> launcher_ = std::make_unique<MemoryChildLauncher>();
    std::map<std::int64_t, Actor> actors_;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, ChildLauncherContract, MemoryStage);

}  // namespace valdorn
