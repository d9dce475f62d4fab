#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/MemoryChildLauncher.h"

namespace valdorn {

namespace {

const LaunchError missing{LaunchError::Step::execute, ENOENT, "/x"};
const LaunchError shortage{LaunchError::Step::prepare, EMFILE, ""};

// What the fake offers beyond the contract.
class MemoryChildLauncherTest : public testing::Test {
protected:
    ChildHandlers handlers() {
        return {[this](std::string_view chunk, OutputCredit credit) {
                    output += chunk;
                    credits.push_back(std::move(credit));
                },
                [this](ChildExit) { ++exits; }};
    }

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(
        const std::string& executable = "/x") {
        return launcher.launch({executable, {"a"}, "/folder", {"A=b"}}, handlers());
    }

    std::string output;
    std::vector<OutputCredit> credits;
    int exits = 0;
    MemoryChildLauncher launcher;
};

TEST_F(MemoryChildLauncherTest, RecordsEveryLaunchButKeepsChildrenOfSuccessesOnly) {
    launcher.failNextLaunch = missing;
    EXPECT_FALSE(launch("/first").ok());
    const auto second = launch("/second");
    ASSERT_EQ(launcher.launches.size(), 2u);
    EXPECT_EQ(launcher.launches[0].executable, "/first");
    EXPECT_EQ(launcher.launches[1].arguments, (std::vector<std::string>{"a"}));
    ASSERT_EQ(launcher.childCount(), 1u);
    EXPECT_EQ(launcher.child(0).id(), 1000);
    EXPECT_EQ(second.value()->id(), 1000);
}

TEST_F(MemoryChildLauncherTest, HandsOverAtOnceNoMoreThanAPipeHolds) {
    const auto child = launch();
    launcher.child(0).print(std::string(65536, 'x'));
    EXPECT_EQ(credits.size(), 1U);
    launcher.child(0).print(std::string(65537, 'x'));
    EXPECT_EQ(credits.size(), 3U);
}

TEST_F(MemoryChildLauncherTest, UsesTheNextFailureOnceAndTheLastingOneForEver) {
    launcher.failNextLaunch = missing;
    launcher.failEveryLaunch = shortage;
    EXPECT_EQ(launch().error(), missing);
    EXPECT_EQ(launch().error(), shortage);
    EXPECT_EQ(launch().error(), shortage);
    launcher.failEveryLaunch.reset();
    EXPECT_TRUE(launch().ok());
}

TEST_F(MemoryChildLauncherTest, CountsRequestsToTerminateAndLeavesTheReactionToTheTest) {
    const auto child = launch();
    child.value()->terminate();
    EXPECT_EQ(launcher.child(0).terminateRequests(), 1);
    EXPECT_TRUE(child.value()->isRunning());
    launcher.child(0).end({ChildExit::Kind::signalled, 15});
    child.value()->terminate();
    EXPECT_EQ(launcher.child(0).terminateRequests(), 2);
}

TEST_F(MemoryChildLauncherTest, ShowsWhatIsPendingAndWhatIsHeldBack) {
    const auto child = launch();
    ScriptedChild& script = launcher.child(0);
    script.print(std::string(maxPendingOutputBytes + 10, 'x'));
    EXPECT_EQ(script.pendingBytes(), maxPendingOutputBytes + 10);
    script.print("more");
    EXPECT_EQ(script.heldBackBytes(), 4u);
    script.end({});
    EXPECT_FALSE(script.isRunning());
    EXPECT_EQ(exits, 0);
    credits.front().reset();
    EXPECT_EQ(exits, 1);
    credits.clear();
    EXPECT_EQ(script.pendingBytes(), 0u);
}

TEST_F(MemoryChildLauncherTest, DiscardsOutputAndSecondEndsAfterTheEnd) {
    const auto child = launch();
    launcher.child(0).end({});
    launcher.child(0).print("late");
    launcher.child(0).end({});
    EXPECT_EQ(output, "");
    EXPECT_EQ(exits, 1);
}

TEST_F(MemoryChildLauncherTest, ChildrenOutliveTheirHandles) {
    launch().value().reset();
    launcher.child(0).print("still heard");
    EXPECT_EQ(output, "still heard");
}

TEST_F(MemoryChildLauncherTest, HandlersAreNotNested) {
    int depth = 0;
    int deepest = 0;
    ChildHandlers nesting{[&](std::string_view chunk, const OutputCredit&) {
                              deepest = std::max(deepest, ++depth);
                              if (chunk == "first")
                                  launcher.child(0).print("second");
                              output += chunk;
                              --depth;
                          },
                          [&](ChildExit) { ++exits; }};
    const auto child = launcher.launch({}, std::move(nesting));
    launcher.child(0).print("first");
    EXPECT_EQ(output, "firstsecond");
    EXPECT_EQ(deepest, 1);
}

TEST_F(MemoryChildLauncherTest, PlaysOneEntryOfTheScriptForEachRun) {
    launcher.runScript.emplace_back(ScriptedRun{{"one", "two"}, {ChildExit::Kind::exited, 1}});
    launcher.runScript.emplace_back(missing);
    const auto collect = [this](std::string_view chunk) { output.append(chunk).append(";"); };
    EXPECT_EQ(launcher.run({}, collect).value(), (ChildExit{ChildExit::Kind::exited, 1}));
    EXPECT_EQ(output, "one;two;");
    EXPECT_EQ(launcher.run({}, collect).error(), missing);
    EXPECT_EQ(launcher.run({}, collect).value(), ChildExit{});
    EXPECT_EQ(launcher.runs.size(), 3u);
}

TEST_F(MemoryChildLauncherTest, LetsTheTestActInsideARun) {
    launcher.runScript.emplace_back(ScriptedRun{{"unheard"}, {}});
    launcher.duringRun = [this] { launcher.shutDown(); };
    const auto outcome = launcher.run({}, [this](std::string_view chunk) { output += chunk; });
    EXPECT_EQ(outcome.error().step, LaunchError::Step::interrupted);
    EXPECT_EQ(output, "");
}

}  // namespace

}  // namespace valdorn
