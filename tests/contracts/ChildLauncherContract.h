#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ChildLauncher.h"
#include "support/ChildRecorder.h"

namespace valdorn {

// One thing that a child of these tests does.
struct ChildStep {
    enum class Kind { print, fill, await, exit, raise };
    Kind kind = Kind::exit;
    std::string text;  // for print
    int number = 0;    // bytes of a pattern, exit code, or signal

    static ChildStep print(std::string text) { return {Kind::print, std::move(text), 0}; }
    static ChildStep fill(int bytes) { return {Kind::fill, {}, bytes}; }
    static ChildStep await() { return {Kind::await, {}, 0}; }
    static ChildStep exit(int code) { return {Kind::exit, {}, code}; }
    static ChildStep raise(int signal) { return {Kind::raise, {}, signal}; }
};
using ChildPlay = std::vector<ChildStep>;

// What every ChildLauncher keeps. `Stage` plays children on one of them:
//   ChildLauncher& launcher();
//   void destroyLauncher();
//   Result<std::unique_ptr<ChildProcess>, LaunchError> launch(ChildPlay, ChildHandlers);
//   Result<ChildExit, LaunchError> run(ChildPlay, onOutput);
//   Result<std::unique_ptr<ChildProcess>, LaunchError> launchNothing(ChildHandlers);  // fails
//   void nudge(std::int64_t id);     // lets it go on after an `await`
//   bool waitForEnd(ChildProcess&);  // until it is not running
template <typename Stage>
class ChildLauncherContract : public testing::Test {
protected:
    static constexpr int floodBytes = 1024 * 1024;

    std::unique_ptr<ChildProcess> launch(const ChildPlay& play, ChildRecorder& recorder) {
        auto launched = stage.launch(play, recorder.handlers());
        EXPECT_TRUE(launched.ok());
        return launched.ok() ? std::move(launched.value()) : nullptr;
    }

    // A child that waits, with as much of its output held as stops the reader.
    std::unique_ptr<ChildProcess> launchHeldBack(ChildRecorder& recorder) {
        const int overdraft = static_cast<int>(maxPendingOutputBytes) + 1;
        auto child = launch({ChildStep::fill(overdraft), ChildStep::await(),
                             ChildStep::print("last words"), ChildStep::exit(0)},
                            recorder);
        EXPECT_TRUE(recorder.waitForBytes(maxPendingOutputBytes + 1));
        stage.nudge(child->id());
        EXPECT_TRUE(stage.waitForEnd(*child));
        letTheReaderGoRound();
        return child;
    }

    // Afterwards whatever happened before has been noticed.
    void letTheReaderGoRound() {
        auto& recorder = newRecorder();
        const auto child = launch({ChildStep::exit(0)}, recorder);
        EXPECT_TRUE(recorder.waitForExit());
    }

    std::vector<std::unique_ptr<ChildRecorder>> recorders;  // outlive the launcher
    ChildRecorder& newRecorder(
        ChildRecorder::Credits credits = ChildRecorder::Credits::dropAtOnce) {
        recorders.push_back(std::make_unique<ChildRecorder>(credits));
        return *recorders.back();
    }

    Stage stage;
};

TYPED_TEST_SUITE_P(ChildLauncherContract);

TYPED_TEST_P(ChildLauncherContract, HandsOverTheOutputAndThenTheExitOnce) {
    auto& recorder = this->newRecorder();
    const auto child = this->launch(
        {ChildStep::print("first "), ChildStep::print("second"), ChildStep::exit(0)}, recorder);
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.output(), "first second");
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 0}));
    EXPECT_EQ(recorder.callsAfterExit(), 0);
    EXPECT_FALSE(child->isRunning());
}

TYPED_TEST_P(ChildLauncherContract, ReportsTheExitOfAChildWithoutOutput) {
    auto& recorder = this->newRecorder();
    const auto child = this->launch({ChildStep::exit(7)}, recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 7}));
    EXPECT_EQ(recorder.output(), "");
}

TYPED_TEST_P(ChildLauncherContract, TellsASignalFromAnExitCode) {
    auto& bySignal = this->newRecorder();
    auto& byCode = this->newRecorder();
    const auto first = this->launch({ChildStep::raise(9)}, bySignal);
    const auto second = this->launch({ChildStep::exit(9)}, byCode);
    ASSERT_TRUE(bySignal.waitForExit());
    ASSERT_TRUE(byCode.waitForExit());
    EXPECT_EQ(bySignal.exit(), (ChildExit{ChildExit::Kind::signalled, 9}));
    EXPECT_EQ(byCode.exit(), (ChildExit{ChildExit::Kind::exited, 9}));
}

TYPED_TEST_P(ChildLauncherContract, CutsOutputIntoChunksOfAtMostOneBuffer) {
    auto& recorder = this->newRecorder();
    const auto child =
        this->launch({ChildStep::fill(this->floodBytes), ChildStep::exit(0)}, recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output().size(), static_cast<std::size_t>(this->floodBytes));
    for (const std::string& chunk : recorder.chunks()) {
        EXPECT_LE(chunk.size(), std::size_t{64} * 1024);
        EXPECT_FALSE(chunk.empty());
    }
}

// Small chunks end where the child was just then, which is not ours to say.
TYPED_TEST_P(ChildLauncherContract, CutsAFloodOfLinesBehindLineFeeds) {
    std::string lines;
    while (lines.size() < 100'000)
        lines += "one of many lines\n";
    auto& recorder = this->newRecorder();
    const auto child = this->launch({ChildStep::print(lines), ChildStep::exit(0)}, recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), lines);
    for (const std::string& chunk : recorder.chunks())
        EXPECT_TRUE(chunk.size() <= maxChunkBytes / 2 || chunk.ends_with('\n'));
}

TYPED_TEST_P(ChildLauncherContract, StopsReadingWhileTooMuchOutputIsHeld) {
    auto& recorder = this->newRecorder(ChildRecorder::Credits::keep);
    const auto child = this->launchHeldBack(recorder);
    EXPECT_EQ(recorder.output().size(), 256U * 1024 + 1);
    EXPECT_EQ(recorder.exit(), std::nullopt);
}

TYPED_TEST_P(ChildLauncherContract, GoesOnWhenTheOutputIsLetGoAndEndsWithTheExit) {
    auto& recorder = this->newRecorder(ChildRecorder::Credits::keep);
    const auto child = this->launchHeldBack(recorder);
    recorder.dropCredits();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output().substr(maxPendingOutputBytes + 1), "last words");
    EXPECT_EQ(recorder.callsAfterExit(), 0);
}

TYPED_TEST_P(ChildLauncherContract, ReadsOnWhileExactlyTheAllowedOutputIsHeld) {
    auto& recorder = this->newRecorder(ChildRecorder::Credits::keep);
    const int allowed = static_cast<int>(maxPendingOutputBytes);
    const auto child = this->launch(
        {ChildStep::fill(allowed), ChildStep::await(), ChildStep::print("x"), ChildStep::exit(0)},
        recorder);
    ASSERT_TRUE(recorder.waitForBytes(maxPendingOutputBytes));
    this->stage.nudge(child->id());
    EXPECT_TRUE(recorder.waitForExit());
}

TYPED_TEST_P(ChildLauncherContract, DoesNotHoldBackOtherChildren) {
    auto& slow = this->newRecorder(ChildRecorder::Credits::keep);
    auto& quick = this->newRecorder();
    const auto heldBack = this->launchHeldBack(slow);
    const auto other = this->launch({ChildStep::print("quick"), ChildStep::exit(0)}, quick);
    ASSERT_TRUE(quick.waitForExit());
    EXPECT_EQ(quick.output(), "quick");
    EXPECT_EQ(slow.exit(), std::nullopt);
}

TYPED_TEST_P(ChildLauncherContract, DroppingTheHandleNeitherEndsNorSilencesTheChild) {
    auto& recorder = this->newRecorder();
    auto child = this->launch({ChildStep::print("ready"), ChildStep::await(),
                               ChildStep::print(" done"), ChildStep::exit(4)},
                              recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    EXPECT_TRUE(child->isRunning());
    const std::int64_t id = child->id();
    child.reset();
    this->stage.nudge(id);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), "ready done");
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 4}));
}

TYPED_TEST_P(ChildLauncherContract, TerminatesPolitelyAndOnlyWhenAsked) {
    auto& recorder = this->newRecorder();
    const auto child = this->launch({ChildStep::print("ready"), ChildStep::await()}, recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    EXPECT_TRUE(child->isRunning());
    child->terminate();
    ASSERT_TRUE(this->stage.waitForEnd(*child));
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::signalled, 15}));
    EXPECT_FALSE(child->isRunning());
}

TYPED_TEST_P(ChildLauncherContract, TerminatingAnEndedChildIsHarmless) {
    auto& recorder = this->newRecorder();
    const auto child = this->launch({ChildStep::exit(0)}, recorder);
    ASSERT_TRUE(recorder.waitForRelease());
    child->terminate();
    child->terminate();
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 0}));
    EXPECT_EQ(recorder.callsAfterExit(), 0);
}

TYPED_TEST_P(ChildLauncherContract, GivesEachChildAnIdOfItsOwn) {
    std::set<std::int64_t> ids;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int count = 0; count < 3; ++count) {
        auto& recorder = this->newRecorder();
        children.push_back(this->launch({ChildStep::print("ready"), ChildStep::await()}, recorder));
        ASSERT_TRUE(recorder.waitForText("ready"));
        ids.insert(children.back()->id());
    }
    EXPECT_EQ(ids.size(), 3u);
    EXPECT_GT(*ids.begin(), 0);
    for (const auto& child : children)
        this->stage.nudge(child->id());
}

TYPED_TEST_P(ChildLauncherContract, AFailedLaunchSaysWhyAndReleasesTheHandlersUncalled) {
    auto& recorder = this->newRecorder();
    const auto launched = this->stage.launchNothing(recorder.handlers());
    ASSERT_FALSE(launched.ok());
    EXPECT_EQ(launched.error().step, LaunchError::Step::execute);
    EXPECT_NE(launched.error().errorNumber, 0);
    EXPECT_FALSE(launched.error().description().empty());
    EXPECT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.exit(), std::nullopt);
}

TYPED_TEST_P(ChildLauncherContract, CallsNoHandlerAfterItIsGone) {
    auto& recorder = this->newRecorder(ChildRecorder::Credits::keep);
    const auto child = this->launchHeldBack(recorder);
    this->stage.destroyLauncher();
    EXPECT_TRUE(recorder.waitForRelease());
    recorder.dropCredits();
    EXPECT_EQ(recorder.output().size(), 256U * 1024 + 1);
    EXPECT_EQ(recorder.exit(), std::nullopt);
}

TYPED_TEST_P(ChildLauncherContract, RunHandsOverTheOutputOnTheCallingThreadAndReturnsTheExit) {
    std::string output;  // not guarded: nobody else may touch it
    const auto outcome =
        this->stage.run({ChildStep::print("one "), ChildStep::print("two"), ChildStep::exit(5)},
                        [&](std::string_view chunk) { output += chunk; });
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value(), (ChildExit{ChildExit::Kind::exited, 5}));
    EXPECT_EQ(output, "one two");
}

TYPED_TEST_P(ChildLauncherContract, ShutDownLeavesChildrenAloneAndLaunchesNoMore) {
    auto& before = this->newRecorder();
    const auto child = this->launch({ChildStep::print("ready"), ChildStep::await(),
                                     ChildStep::print("later"), ChildStep::exit(4)},
                                    before);
    ASSERT_TRUE(before.waitForBytes(5));
    this->stage.launcher().shutDown();

    auto& after = this->newRecorder();
    const auto refused = this->stage.launch({ChildStep::exit(0)}, after.handlers());
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), (LaunchError{LaunchError::Step::interrupted, 0, {}}));

    this->stage.nudge(child->id());
    EXPECT_TRUE(before.waitForExit());
    EXPECT_EQ(before.output(), "readylater");
}

TYPED_TEST_P(ChildLauncherContract, InterruptedRunsReturnAndLaterOnesDoNotStart) {
    const auto interrupt = [&](std::string_view) { this->stage.launcher().shutDown(); };
    const auto first = this->stage.run({ChildStep::print("ready"), ChildStep::await()}, interrupt);
    ASSERT_FALSE(first.ok());
    EXPECT_EQ(first.error(), (LaunchError{LaunchError::Step::interrupted, 0, {}}));

    std::string output;
    const auto second = this->stage.run({ChildStep::print("ready"), ChildStep::exit(0)},
                                        [&](std::string_view chunk) { output += chunk; });
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error().step, LaunchError::Step::interrupted);
    EXPECT_EQ(output, "");
}

REGISTER_TYPED_TEST_SUITE_P(
    ChildLauncherContract, HandsOverTheOutputAndThenTheExitOnce,
    ReportsTheExitOfAChildWithoutOutput, TellsASignalFromAnExitCode,
    CutsOutputIntoChunksOfAtMostOneBuffer, CutsAFloodOfLinesBehindLineFeeds,
    StopsReadingWhileTooMuchOutputIsHeld, GoesOnWhenTheOutputIsLetGoAndEndsWithTheExit,
    ReadsOnWhileExactlyTheAllowedOutputIsHeld, DoesNotHoldBackOtherChildren,
    DroppingTheHandleNeitherEndsNorSilencesTheChild, TerminatesPolitelyAndOnlyWhenAsked,
    TerminatingAnEndedChildIsHarmless, GivesEachChildAnIdOfItsOwn,
    AFailedLaunchSaysWhyAndReleasesTheHandlersUncalled, CallsNoHandlerAfterItIsGone,
    RunHandsOverTheOutputOnTheCallingThreadAndReturnsTheExit,
    ShutDownLeavesChildrenAloneAndLaunchesNoMore, InterruptedRunsReturnAndLaterOnesDoNotStart);

}  // namespace valdorn
