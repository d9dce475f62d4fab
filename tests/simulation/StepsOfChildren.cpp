#include <cerrno>

#include "simulation/Grammar.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

std::string childName(std::size_t index) {
    return "child " + std::to_string(index);
}

// Output waits for the main thread, and beyond a limit the child is held back: then what is posted
// runs first, as the order of lines and other tasks is nobody's to promise.
void print(Stage& stage, std::size_t index, const std::string& chunk) {
    ScriptedChild& child = stage.program().launcher.child(index);
    if (child.pendingBytes() + chunk.size() > maxPendingOutputBytes)
        stage.settle();
    child.print(chunk);
    ModelRunner::print(*stage.process().machine.children[index], chunk);
    if (stage.isTelling)
        stage.tell(childName(index) + " prints " + shown(chunk));
}

void prints(Stage& stage, Random& random) {
    const auto index = stage.anyChild(random);
    if (!index)
        return;
    for (const std::string& chunk : Grammar::cut(random, Grammar::output(random)))
        print(stage, *index, chunk);
}

void printsAGiant(Stage& stage, Random& random) {
    const auto index = stage.anyChild(random);
    if (!index)
        return;
    for (const std::string& chunk : Grammar::cut(random, Grammar::giant(random)))
        print(stage, *index, chunk);
    if (random.chance(50))
        print(stage, *index, "\n");
}

// More than may wait for the main thread, at once: some of it is held back until it runs. All lines
// say the same, as lines that say nothing do not wait.
void floods(Stage& stage, Random& random) {
    const auto index = stage.anyChild(random);
    if (!index)
        return;
    stage.settle();
    ScriptedChild& child = stage.program().launcher.child(*index);
    const std::size_t size = 30000 + random.below(30000);
    for (std::size_t number = 0; number < 12; ++number) {
        const std::string chunk =
            Grammar::keptLine("flood" + std::to_string(number) + " repo is acme/flood ", size);
        child.print(chunk);
        ModelRunner::print(*stage.process().machine.children[*index], chunk);
    }
    if (child.heldBackBytes() > 0)
        reached<"output held back">();
    stage.tell(childName(*index) + " floods");
    stage.settle();
}

void end(Stage& stage, std::size_t index, ChildExit exit) {
    stage.program().launcher.child(index).end(exit);
    ModelRunner::end(stage.process().machine, stage.process().machine.children[index]);
    stage.tell(childName(index) + " ends");
}

void ends(Stage& stage, Random& random) {
    if (const auto index = stage.anyChild(random)) {
        const auto kind = random.pick({ChildExit::Kind::exited, ChildExit::Kind::signalled});
        end(stage, *index, {kind, static_cast<int>(random.below(3))});
    }
}

// A child that was asked to.
void obeys(Stage& stage, Random& random) {
    const auto& children = stage.process().machine.children;
    for (std::size_t index = 0; index < children.size(); ++index) {
        if (children[index]->isRunning && children[index]->terminateRequests > 0 &&
            random.chance(70))
            end(stage, index, {ChildExit::Kind::signalled, 15});
    }
}

void nextLaunchFails(Stage& stage, Random&) {
    stage.process().machine.nextLaunchFails = true;
    stage.program().launcher.failNextLaunch =
        LaunchError{LaunchError::Step::prepare, EAGAIN, "process"};
    stage.tell("the next launch will fail");
}

void launchingStopsWorking(Stage& stage, Random& random) {
    const bool fails = random.chance(50);
    stage.process().machine.everyLaunchFails = fails;
    auto& failure = stage.program().launcher.failEveryLaunch;
    failure.reset();
    if (fails)
        failure = LaunchError{LaunchError::Step::execute, ENOENT, "act_runner"};
    stage.tell(fails ? "every launch will fail" : "launches succeed again");
}

// While the computer sleeps, the steady clock stands; then all children speak at once.
void suspends(Stage& stage, Random& random) {
    reached<"suspended">();
    stage.tell("the computer sleeps and wakes");
    const auto& children = stage.process().machine.children;
    for (std::size_t index = 0; index < children.size(); ++index) {
        if (random.chance(60))
            print(stage, index, Grammar::output(random));
        if (random.chance(30))
            end(stage, index, {ChildExit::Kind::exited, 1});
    }
}

}  // namespace

void Steps::addChildSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::child, 600, prints});
    kinds.push_back({Field::child, 3, printsAGiant});
    kinds.push_back({Field::child, 1, floods});
    kinds.push_back({Field::child, 120, ends});
    kinds.push_back({Field::child, 80, obeys});
    kinds.push_back({Field::child, 20, nextLaunchFails});
    kinds.push_back({Field::child, 20, launchingStopsWorking});
    kinds.push_back({Field::child, 20, suspends});
}

}  // namespace valdorn::simulation
