#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerManager.h"
#include "support/FakeWorld.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

constexpr ChildExit failure{ChildExit::Kind::exited, 1};

class RunnerManagerTest : public testing::Test {
protected:
    RunnerManagerTest() { world.markRegistered("abc"); }

    // A registered runner whose child was launched.
    void startRunner() {
        runner->start();
        world.queue.runPosted();
    }

    ScriptedChild& child(std::size_t index = 0) { return world.launcher.child(index); }

    // Lets the current child print whole lines and waits until they are applied.
    void prints(const std::string& text) {
        child(world.launcher.childCount() - 1).print(text);
        world.queue.runPosted();
    }

    std::string log() { return world.files.files[FakeWorld::dataFolder("abc") + "/valdorn.log"]; }

    FakeWorld world;
    std::shared_ptr<RunnerManager> runner =
        RunnerManager::create(FakeWorld::record("abc"), world.services());
};

TEST_F(RunnerManagerTest, IsStoppedAndEmptyWhenMade) {
    EXPECT_EQ(runner->id(), "abc");
    EXPECT_EQ(runner->config(), FakeWorld::record("abc"));
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
    EXPECT_EQ(runner->runnerVersion(), std::nullopt);
    EXPECT_EQ(runner->startedAt(), std::nullopt);
    EXPECT_FALSE(runner->keepRunning());
    EXPECT_FALSE(runner->isRunning());
    EXPECT_TRUE(world.launcher.launches.empty());
    EXPECT_EQ(world.queue.pending(), 0U);
}

// Folders and files.

TEST_F(RunnerManagerTest, HasAFolderNamedAfterItsId) {
    EXPECT_EQ(runner->dataDir(), "/home/ada/Library/Application Support/Valdorn/runners/abc");
}

TEST_F(RunnerManagerTest, LegacyRunnerLivesInTheSupportFolder) {
    RunnerConfig record = runner->config();
    record.legacy = true;
    runner->setConfig(record);
    EXPECT_EQ(runner->dataDir(), "/home/ada/Library/Application Support/Valdorn");
}

TEST_F(RunnerManagerTest, AnyEntryOfTheMarkersNameCountsAsRegistered) {
    EXPECT_TRUE(runner->isRegistered());
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    EXPECT_FALSE(runner->isRegistered());
    world.files.folders.insert(FakeWorld::dataFolder("abc") + "/.runner");
    EXPECT_TRUE(runner->isRegistered());
}

TEST_F(RunnerManagerTest, WritesTheDaemonConfigurationAtEachLaunch) {
    const std::string path = FakeWorld::dataFolder("abc") + "/runner-config.yaml";
    startRunner();
    EXPECT_EQ(world.files.files[path], "log:\n  level: debug\n");
    EXPECT_EQ(world.files.files[path].size(), 20U);
    world.files.files[path] = "edited: by hand\n";
    startRunner();
    EXPECT_EQ(world.files.files[path], "log:\n  level: debug\n");
    EXPECT_EQ(world.files.atomicReplacements, (std::vector<std::string>{path, path}));
}

TEST_F(RunnerManagerTest, MakesItsFolderBeforeTheLaunch) {
    startRunner();
    EXPECT_EQ(world.files.foldersMade, (std::vector<std::string>{FakeWorld::dataFolder("abc")}));
}

TEST_F(RunnerManagerTest, RunsWithoutFolderConfigurationAndLog) {
    const std::string folder = FakeWorld::dataFolder("abc");
    for (const auto* name : {"", "/runner-config.yaml", "/valdorn.log"}) {
        world.files.failures[folder + name] = EACCES;
    }
    startRunner();
    prints("time=\"x\" level=info msg=\"declare successfully\"\n");
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_EQ(log(), "");
}

// Launching.

TEST_F(RunnerManagerTest, LaunchesTheDaemonInItsFolder) {
    startRunner();
    ASSERT_EQ(world.launcher.launches.size(), 1U);
    const ChildCommand& command = world.launcher.launches.front();
    EXPECT_EQ(command.executable, "/home/ada/actrunner/act_runner");
    EXPECT_EQ(command.arguments,
              (std::vector<std::string>{"daemon", "--config",
                                        FakeWorld::dataFolder("abc") + "/runner-config.yaml"}));
    EXPECT_EQ(command.workingFolder, FakeWorld::dataFolder("abc"));
}

TEST_F(RunnerManagerTest, PrefersTheBundledExecutable) {
    world.resources.paths["act_runner"] = "/opt/valdorn/act_runner";
    startRunner();
    EXPECT_EQ(world.launcher.launches.front().executable, "/opt/valdorn/act_runner");
}

constexpr char fixedPath[] =
    "PATH=/home/ada/.cargo/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

TEST_F(RunnerManagerTest, ReplacesOnlyPathInTheEnvironment) {
    world.host.variables = {"LANG=C",      "PATH=/elsewhere", "PATH=/twice",
                            "PATHOLOGY=x", "PATH=/thrice",    "A=b"};
    startRunner();
    EXPECT_EQ(world.launcher.launches.front().environment,
              (std::vector<std::string>{"LANG=C", fixedPath, "PATHOLOGY=x", "A=b"}));
}

TEST_F(RunnerManagerTest, AddsPathToAnEnvironmentWithoutOne) {
    world.host.variables = {"LANG=C"};
    startRunner();
    EXPECT_EQ(world.launcher.launches.front().environment,
              (std::vector<std::string>{"LANG=C", fixedPath}));
}

TEST_F(RunnerManagerTest, ReadsTheRecordAfreshAtEachLaunch) {
    startRunner();
    RunnerConfig record = runner->config();
    record.extraPath = "/tools";
    runner->setConfig(record);
    startRunner();
    EXPECT_EQ(world.launcher.launches[0].environment.back(), fixedPath);
    EXPECT_EQ(world.launcher.launches[1].environment.back(),
              "PATH=/tools:" + std::string(fixedPath).substr(5));
}

TEST_F(RunnerManagerTest, StartOfAnUnregisteredRunnerOnlyShowsIt) {
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    runner->start();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::notRegistered);
    EXPECT_FALSE(runner->keepRunning());
    EXPECT_TRUE(world.launcher.launches.empty());
}

TEST_F(RunnerManagerTest, StartOfARunnerWhoseMarkerWentKeepsKeepRunning) {
    startRunner();
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    startRunner();
    EXPECT_EQ(runner->status(), RunnerStatus::notRegistered);
    EXPECT_TRUE(runner->keepRunning());
}

TEST_F(RunnerManagerTest, IsStartingOnceItsChildIsLaunched) {
    world.queue.advance(10s);
    runner->start();
    EXPECT_TRUE(runner->keepRunning());
    EXPECT_TRUE(runner->isRunning());
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(runner->startedAt(), std::nullopt);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
    EXPECT_EQ(runner->startedAt(), world.queue.now());
}

TEST_F(RunnerManagerTest, FailedLaunchEndsInStoppedWithoutARelaunch) {
    world.launcher.failNextLaunch = LaunchError{LaunchError::Step::execute, ENOENT, "x"};
    runner->start();
    std::vector<RunnerStatus> seen;
    const Subscription changes = runner->onWillChange([&] { seen.push_back(runner->status()); });
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(seen, (std::vector{RunnerStatus::stopped, RunnerStatus::starting}));
    EXPECT_TRUE(runner->keepRunning());
    EXPECT_EQ(runner->startedAt(), std::nullopt);
    EXPECT_FALSE(runner->isRunning());
    EXPECT_EQ(world.files.openHandles(), 0);
    world.queue.advance(1h);
    EXPECT_EQ(world.launcher.launches.size(), 1U);
}

TEST_F(RunnerManagerTest, FailedLaunchKeepsTheChildItHad) {
    startRunner();
    world.launcher.failNextLaunch = LaunchError{LaunchError::Step::execute, ENOENT, "x"};
    startRunner();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_TRUE(runner->isRunning());
}

TEST_F(RunnerManagerTest, SecondStartLaunchesASecondChildAndForgetsTheFirst) {
    startRunner();
    startRunner();
    ASSERT_EQ(world.launcher.childCount(), 2U);
    runner->stop();
    EXPECT_EQ(child(0).terminateRequests(), 0);
    EXPECT_EQ(child(1).terminateRequests(), 1);
}

// The log.

TEST_F(RunnerManagerTest, CreatesItsLogAtTheLaunch) {
    startRunner();
    EXPECT_TRUE(world.files.files.contains(FakeWorld::dataFolder("abc") + "/valdorn.log"));
    EXPECT_EQ(world.files.openHandles(), 1);
}

TEST_F(RunnerManagerTest, AppendsToItsLogAcrossLaunches) {
    world.files.files[FakeWorld::dataFolder("abc") + "/valdorn.log"] = "old\n";
    startRunner();
    prints("Error: one\n");
    child().end(failure);
    world.queue.advance(5s);
    prints("Error: two\n");
    EXPECT_EQ(log(), "old\nError: one\nError: two\n");
}

TEST_F(RunnerManagerTest, ClosesItsLogWhenTheExitIsHandled) {
    startRunner();
    runner->stop();
    world.queue.runPosted();
    prints("Error: still stopping\n");
    EXPECT_EQ(world.files.openHandles(), 1);
    EXPECT_EQ(log(), "Error: still stopping\n");
    child().end(failure);
    world.queue.runPosted();
    EXPECT_EQ(world.files.openHandles(), 0);
}

// Keeps the handlers of a launch for itself, longer than any launcher has to.
class KeepingLauncher : public MemoryChildLauncher {
public:
    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override {
        kept = handlers;
        return MemoryChildLauncher::launch(command, std::move(handlers));
    }

    ChildHandlers kept;
};

TEST_F(RunnerManagerTest, ClosesItsLogWhoeverHoldsOnToTheHandlers) {
    KeepingLauncher launcher;
    runner = RunnerManager::create(FakeWorld::record("abc"),
                                   {world.queue, world.background, launcher, world.files,
                                    world.defaults, world.resources, world.host});
    startRunner();
    launcher.child(0).end(failure);
    world.queue.runPosted();
    EXPECT_TRUE(launcher.kept.onOutput);
    EXPECT_EQ(world.files.openHandles(), 0);
    runner.reset();
}

TEST_F(RunnerManagerTest, LateExitOfAnEarlierChildClosesOnlyItsOwnLog) {
    startRunner();
    runner->stop();
    startRunner();
    child(0).print("Error: from the first\n");
    child(0).end(failure);
    world.queue.runPosted();
    EXPECT_EQ(world.files.openHandles(), 1);
    child(1).print("Error: from the second\n");
    EXPECT_EQ(log(), "Error: from the first\nError: from the second\n");
}

TEST_F(RunnerManagerTest, IncompleteLineOfOneLaunchIsNotContinuedByTheNext) {
    startRunner();
    prints("with version: ");
    child().end(failure);
    world.queue.advance(5s);
    prints("1.0\n");
    EXPECT_EQ(runner->runnerVersion(), std::nullopt);
}

// Lines. One cell of the table each: event x status.

constexpr char declaredLine[] = "runner: mac, declare successfully\n";
constexpr char jobStartedLine[] = "Running job with maxParallel=1\n";
constexpr char jobFinishedLine[] = "Worker 0 finished (1 tasks executed)\n";
constexpr char noRouteLine[] = "dial tcp: connect: no route to host\n";
constexpr char deniedLine[] = "socket: permission denied\n";
constexpr char repositoryLine[] = "task 7 repo is acme/site u u\n";
constexpr char jobOutputLine[] = "[CI/build]   | hello\n";

struct Cell {
    RunnerStatus from;
    const char* line;
    RunnerStatus to;
};

class RunnerTransitions : public RunnerManagerTest, public testing::WithParamInterface<Cell> {
protected:
    void bringTo(RunnerStatus status) {
        startRunner();
        switch (status) {
            case RunnerStatus::notRegistered:
                // The marker goes while the child lives on.
                world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
                startRunner();
                break;
            case RunnerStatus::stopped:
                runner->stop();
                world.queue.runPosted();
                break;
            case RunnerStatus::starting:
                break;
            case RunnerStatus::noNetwork:
                prints(noRouteLine);
                break;
            case RunnerStatus::connected:
                prints(declaredLine);
                break;
            case RunnerStatus::building:
                prints(jobStartedLine);
                break;
        }
        ASSERT_EQ(runner->status(), status);
    }
};

TEST_P(RunnerTransitions, FollowsTheLine) {
    bringTo(GetParam().from);
    prints(GetParam().line);
    EXPECT_EQ(rawValue(runner->status()), rawValue(GetParam().to)) << GetParam().line;
}

std::vector<Cell> transitions() {
    constexpr RunnerStatus all[] = {RunnerStatus::notRegistered, RunnerStatus::stopped,
                                    RunnerStatus::starting,      RunnerStatus::noNetwork,
                                    RunnerStatus::connected,     RunnerStatus::building};
    std::vector<Cell> cells;
    for (const RunnerStatus from : all) {
        cells.push_back(
            {from, declaredLine, from == RunnerStatus::building ? from : RunnerStatus::connected});
        cells.push_back({from, jobStartedLine, RunnerStatus::building});
        cells.push_back({from, jobFinishedLine, from});
        cells.push_back({from, noRouteLine, RunnerStatus::noNetwork});
        cells.push_back({from, deniedLine, RunnerStatus::noNetwork});
        cells.push_back({from, repositoryLine, from});
        cells.push_back({from, jobOutputLine, from});
        cells.push_back({from, "\n", from});
    }
    return cells;
}

INSTANTIATE_TEST_SUITE_P(StatusByLine, RunnerTransitions, testing::ValuesIn(transitions()));

TEST_F(RunnerManagerTest, RepositoryLineSetsTheBuild) {
    startRunner();
    prints(repositoryLine);
    EXPECT_EQ(runner->currentBuild(), "acme/site");
}

TEST_F(RunnerManagerTest, LabelledLineSetsTheJobAndOthersKeepIt) {
    startRunner();
    prints(jobOutputLine);
    EXPECT_EQ(runner->currentJob(), "CI/build");
    prints("plain output\n");
    EXPECT_EQ(runner->currentJob(), "CI/build");
    prints("[CI/test] x\n");
    EXPECT_EQ(runner->currentJob(), "CI/test");
}

TEST_F(RunnerManagerTest, VersionStaysOnceItIsKnown) {
    startRunner();
    prints("x with version: 1.2.3, with labels\n");
    EXPECT_EQ(runner->runnerVersion(), "1.2.3");
    prints("x with version: \n");
    EXPECT_EQ(runner->runnerVersion(), "1.2.3");
    runner->stop();
    child().end(failure);
    world.queue.runPosted();
    EXPECT_EQ(runner->runnerVersion(), "1.2.3");
}

TEST_F(RunnerManagerTest, OneLineCanSetVersionJobAndStatus) {
    startRunner();
    prints("[CI/build] with version: v1, Running job with maxParallel=1\n");
    EXPECT_EQ(runner->runnerVersion(), "v1");
    EXPECT_EQ(runner->currentJob(), "CI/build");
    EXPECT_EQ(runner->status(), RunnerStatus::building);
}

TEST_F(RunnerManagerTest, TakesTheVersionOfALineBeforeItsJob) {
    startRunner();
    std::vector<std::optional<std::string>> seen;
    const Subscription changes =
        runner->onWillChange([&] { seen.push_back(runner->runnerVersion()); });
    prints("[CI/build] with version: v1\n");
    EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{std::nullopt, "v1"}));
}

TEST_F(RunnerManagerTest, DeclaredLineWithAVersionConnects) {
    startRunner();
    prints("runner: mac, with version: v1.0.8, with labels: [macos], declare successfully\n");
    EXPECT_EQ(runner->runnerVersion(), "v1.0.8");
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
}

TEST_F(RunnerManagerTest, DeclaredWhileBuildingKeepsBuildingButClearsBuildAndJob) {
    startRunner();
    prints(std::string(repositoryLine) + jobStartedLine + jobOutputLine);
    prints(declaredLine);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
}

TEST_F(RunnerManagerTest, LostNetworkKeepsBuildAndJob) {
    startRunner();
    prints(std::string(repositoryLine) + jobStartedLine + jobOutputLine);
    prints(noRouteLine);
    EXPECT_EQ(runner->status(), RunnerStatus::noNetwork);
    EXPECT_EQ(runner->currentBuild(), "acme/site");
    EXPECT_EQ(runner->currentJob(), "CI/build");
}

TEST_F(RunnerManagerTest, LinesAreAppliedInOrderAndLater) {
    startRunner();
    child().print(std::string(declaredLine) + jobStartedLine);
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::building);
}

TEST_F(RunnerManagerTest, LinesAreAppliedHoweverTheyAreSplit) {
    startRunner();
    for (const char c : std::string("[CI/build] with version: v1, declare successfully\n")) {
        child().print(std::string(1, c));
    }
    world.queue.runPosted();
    EXPECT_EQ(runner->runnerVersion(), "v1");
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
}

TEST_F(RunnerManagerTest, CreditIsKeptUntilTheLinesAreApplied) {
    startRunner();
    const std::string line = "[CI/build] a line\n";
    child().print(line);
    EXPECT_EQ(child().pendingBytes(), line.size());
    world.queue.runPosted();
    EXPECT_EQ(child().pendingBytes(), 0U);
}

TEST_F(RunnerManagerTest, LinesThatTellNothingAreNotKeptForTheMainThread) {
    startRunner();
    child().print("a line\nanother\n");
    EXPECT_EQ(child().pendingBytes(), 0U);
}

TEST_F(RunnerManagerTest, SlowMainThreadHoldsTheChildBackAndLosesNothing) {
    startRunner();
    const std::string line = "[CI/build] " + std::string(1012, 'x');
    std::string flood;
    for (int count = 0; count < 4096; ++count)
        flood += line + "\n";
    child().print(flood + "with version: last\n");
    EXPECT_LE(child().pendingBytes(), maxPendingOutputBytes + 64 * 1024);
    world.queue.runPosted();
    EXPECT_EQ(runner->runnerVersion(), "last");
}

// The idle revert.

TEST_F(RunnerManagerTest, RevertsToIdleFourSecondsAfterAFinishedJob) {
    startRunner();
    prints(std::string(repositoryLine) + jobStartedLine + jobOutputLine);
    prints(jobFinishedLine);
    world.queue.advance(3999ms);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    EXPECT_EQ(runner->currentBuild(), "acme/site");
    world.queue.advance(1ms);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
}

TEST_F(RunnerManagerTest, NextJobCallsTheRevertOff) {
    startRunner();
    prints(std::string(jobStartedLine) + jobFinishedLine);
    world.queue.advance(3s);
    prints(std::string(repositoryLine) + jobStartedLine);
    std::vector<RunnerStatus> seen;
    const Subscription changes = runner->onWillChange([&] { seen.push_back(runner->status()); });
    world.queue.advance(1h);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    EXPECT_EQ(runner->currentBuild(), "acme/site");
    EXPECT_TRUE(seen.empty());
}

TEST_F(RunnerManagerTest, DeclaredCallsTheRevertOff) {
    startRunner();
    prints(std::string(jobStartedLine) + jobFinishedLine);
    world.queue.advance(3s);
    prints(declaredLine);
    world.queue.advance(1h);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
}

TEST_F(RunnerManagerTest, SecondFinishStartsTheRevertAnew) {
    startRunner();
    prints(std::string(jobStartedLine) + jobFinishedLine);
    world.queue.advance(3s);
    prints(jobFinishedLine);
    world.queue.advance(3999ms);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    world.queue.advance(1ms);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_EQ(world.queue.pending(), 0U);
}

TEST_F(RunnerManagerTest, RevertClearsBuildAndJobWhateverTheStatus) {
    startRunner();
    prints(std::string(repositoryLine) + jobOutputLine + jobFinishedLine);
    prints(noRouteLine);
    world.queue.advance(4s);
    EXPECT_EQ(runner->status(), RunnerStatus::noNetwork);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
}

TEST_F(RunnerManagerTest, FinishedOutsideAJobDoesNotConnect) {
    startRunner();
    prints(jobFinishedLine);
    world.queue.advance(4s);
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
}

// Exits and relaunches.

TEST_F(RunnerManagerTest, RelaunchesFiveSecondsAfterAnExitWhileWanted) {
    startRunner();
    prints(std::string(repositoryLine) + declaredLine + repositoryLine + jobOutputLine);
    const auto startedAt = runner->startedAt();
    child().end({ChildExit::Kind::signalled, 9});
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_EQ(runner->currentBuild(), "acme/site");
    EXPECT_EQ(runner->currentJob(), "CI/build");
    EXPECT_EQ(runner->startedAt(), startedAt);
    EXPECT_FALSE(runner->isRunning());
    world.queue.advance(4999ms);
    EXPECT_EQ(world.launcher.launches.size(), 1U);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    world.queue.advance(1ms);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
    EXPECT_EQ(runner->startedAt(), world.queue.now());
}

TEST_F(RunnerManagerTest, CleanExitIsRelaunchedToo) {
    startRunner();
    child().end({ChildExit::Kind::exited, 0});
    world.queue.advance(5s);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(RunnerManagerTest, RelaunchesForAsLongAsTheChildKeepsDying) {
    startRunner();
    for (std::size_t count = 1; count <= 100; ++count) {
        child(count - 1).end(failure);
        world.queue.advance(5s);
        ASSERT_EQ(world.launcher.childCount(), count + 1);
    }
}

TEST_F(RunnerManagerTest, RelaunchDoesNotAskForTheMarker) {
    startRunner();
    child().end(failure);
    world.queue.runPosted();
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    world.queue.advance(5s);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(RunnerManagerTest, OutputRightBeforeTheExitIsAppliedFirst) {
    startRunner();
    child().print("with version: v9\n");
    child().end(failure);
    world.queue.runPosted();
    EXPECT_EQ(runner->runnerVersion(), "v9");
}

TEST_F(RunnerManagerTest, StopClearsWhatTheRunnerDoes) {
    startRunner();
    prints(std::string(repositoryLine) + jobStartedLine + jobOutputLine);
    runner->stop();
    EXPECT_FALSE(runner->keepRunning());
    EXPECT_FALSE(runner->isRunning());
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
    EXPECT_EQ(runner->startedAt(), std::nullopt);
}

TEST_F(RunnerManagerTest, StopPublishesBuildJobStartTimeAndStatusInThisOrder) {
    startRunner();
    prints(std::string(repositoryLine) + jobStartedLine + jobOutputLine);
    std::vector<std::string> seen;
    const Subscription changes = runner->onWillChange([&] {
        seen.push_back(std::string(runner->currentBuild() ? "build " : "") +
                       (runner->currentJob() ? "job " : "") + (runner->startedAt() ? "time " : "") +
                       std::string(rawValue(runner->status())));
    });
    runner->stop();
    world.queue.runPosted();
    EXPECT_EQ(seen,
              (std::vector<std::string>{"build job time Building a job", "job time Building a job",
                                        "time Building a job", "Building a job"}));
}

TEST_F(RunnerManagerTest, StopWithoutAChildIsStopped) {
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    startRunner();
    runner->stop();
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
}

TEST_F(RunnerManagerTest, ExitAfterAStopIsNotRelaunched) {
    startRunner();
    runner->stop();
    child().end({ChildExit::Kind::signalled, 15});
    world.queue.advance(1h);
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(world.launcher.launches.size(), 1U);
    EXPECT_EQ(world.queue.pending(), 0U);
}

TEST_F(RunnerManagerTest, LinesAfterAStopStillCountUntilTheExit) {
    startRunner();
    runner->stop();
    world.queue.runPosted();
    prints(declaredLine);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    child().end(failure);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
}

TEST_F(RunnerManagerTest, StopDuringTheWaitDoesNotCallTheRelaunchOff) {
    startRunner();
    child().end(failure);
    world.queue.advance(2s);
    runner->stop();
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    world.queue.advance(3s);
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
    EXPECT_FALSE(runner->keepRunning());
    EXPECT_TRUE(runner->isRunning());
    child(1).end(failure);
    world.queue.advance(1h);
    EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(RunnerManagerTest, LateExitOfAStoppedChildRelaunchesARunnerThatIsWantedAgain) {
    startRunner();
    runner->stop();
    startRunner();
    child(0).end(failure);
    world.queue.advance(5s);
    EXPECT_EQ(world.launcher.launches.size(), 3U);
}

TEST_F(RunnerManagerTest, RestartEndsAWantedChildAndLeavesTheRestToTheRelaunch) {
    startRunner();
    runner->restart();
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_EQ(world.launcher.launches.size(), 1U);
    EXPECT_TRUE(runner->keepRunning());
    child().end({ChildExit::Kind::signalled, 15});
    world.queue.advance(5s);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(RunnerManagerTest, RestartStartsAStoppedRunner) {
    runner->restart();
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
    EXPECT_TRUE(runner->keepRunning());
}

TEST_F(RunnerManagerTest, RestartDuringTheWaitStartsAtOnce) {
    startRunner();
    child().end(failure);
    world.queue.runPosted();
    runner->restart();
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(RunnerManagerTest, RestartOfAnUnwantedChildStarts) {
    startRunner();
    child().end(failure);
    world.queue.advance(1s);
    runner->stop();
    world.queue.advance(4s);  // the relaunch that the stop did not call off
    ASSERT_EQ(world.launcher.launches.size(), 2U);
    runner->restart();
    EXPECT_EQ(child(1).terminateRequests(), 0);
    EXPECT_EQ(world.launcher.launches.size(), 3U);
    EXPECT_TRUE(runner->keepRunning());
}

TEST_F(RunnerManagerTest, RestartOfAnUnregisteredRunnerOnlyShowsIt) {
    world.files.files.erase(FakeWorld::dataFolder("abc") + "/.runner");
    runner->restart();
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::notRegistered);
    EXPECT_TRUE(world.launcher.launches.empty());
}

// Announcements.

TEST_F(RunnerManagerTest, AnnouncesBeforeTheChange) {
    startRunner();
    std::vector<std::optional<std::string>> seen;
    const Subscription changes =
        runner->onWillChange([&] { seen.push_back(runner->runnerVersion()); });
    prints("with version: 1\n");
    prints("with version: 2\n");
    EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{std::nullopt, "1"}));
    EXPECT_EQ(runner->runnerVersion(), "2");
}

TEST_F(RunnerManagerTest, DoesNotAnnounceEqualValues) {
    startRunner();
    const std::string lines =
        std::string("x with version: 1, y\n") + repositoryLine + jobOutputLine + noRouteLine;
    prints(lines);
    int announcements = 0;
    const Subscription changes = runner->onWillChange([&] { ++announcements; });
    prints(lines);
    EXPECT_EQ(announcements, 0);
}

TEST_F(RunnerManagerTest, AnnouncesTheStartTimeEvenWhenItIsEqual) {
    startRunner();
    prints(declaredLine);
    int announcements = 0;
    const Subscription changes = runner->onWillChange([&] { ++announcements; });
    startRunner();  // the clock stands still; the status changes once
    EXPECT_EQ(announcements, 2);
    runner->stop();
    world.queue.runPosted();
    runner->stop();
    world.queue.runPosted();
    EXPECT_EQ(announcements, 2 + 2 + 1);
}

TEST_F(RunnerManagerTest, AnnouncesARecordBeforeItIsStored) {
    std::vector<std::string> seen;
    const Subscription changes = runner->onConfigWillSet([&](const RunnerConfig& coming) {
        seen.push_back(runner->config().name + " -> " + coming.name);
    });
    RunnerConfig record = runner->config();
    record.name = "B";
    runner->setConfig(record);
    EXPECT_EQ(seen, (std::vector<std::string>{"name of abc -> B"}));
    EXPECT_EQ(runner->config().name, "B");
}

// Lifetime.

TEST_F(RunnerManagerTest, DroppingItLeavesTheChildAlone) {
    startRunner();
    runner.reset();
    EXPECT_EQ(child().terminateRequests(), 0);
    child().print("Error: nobody reads this\n");
    world.queue.runPosted();
    EXPECT_EQ(log(), "");
    child().end(failure);
    world.queue.advance(1h);
    EXPECT_EQ(world.launcher.launches.size(), 1U);
    EXPECT_EQ(world.files.openHandles(), 0);
}

TEST_F(RunnerManagerTest, NothingHandedOutKeepsItAlive) {
    startRunner();
    prints(std::string(jobStartedLine) + jobFinishedLine);  // a revert is pending
    child().print(declaredLine);                            // lines are pending
    const std::weak_ptr<RunnerManager> weak = runner;
    runner.reset();
    EXPECT_TRUE(weak.expired());
    world.queue.advance(1h);
}

TEST_F(RunnerManagerTest, ScheduledRelaunchKeepsItAlive) {
    startRunner();
    child().end(failure);
    world.queue.runPosted();
    const std::weak_ptr<RunnerManager> weak = runner;
    runner.reset();
    EXPECT_FALSE(weak.expired());
    world.queue.advance(5s);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
    EXPECT_TRUE(weak.expired());
}

TEST_F(RunnerManagerTest, ArmsNothingWhileItRuns) {
    startRunner();
    prints(declaredLine);
    EXPECT_EQ(world.queue.pending(), 0U);
}

// Registration.

TEST_F(RunnerManagerTest, RegistersWithTenArguments) {
    world.host.variables = {"PATH=/own", "LANG=C"};
    EXPECT_EQ(runner->registration("a token").run(), RegistrationOutcome(Registered{}));
    ASSERT_EQ(world.launcher.runs.size(), 1U);
    const ChildCommand& command = world.launcher.runs.front();
    EXPECT_EQ(command.executable, "/home/ada/actrunner/act_runner");
    EXPECT_EQ(command.arguments,
              (std::vector<std::string>{"register", "--no-interactive", "--instance",
                                        "http://gitea.test", "--token", "a token", "--name",
                                        "name of abc", "--labels", "macos"}));
    EXPECT_EQ(command.workingFolder, FakeWorld::dataFolder("abc"));
    EXPECT_EQ(command.environment, world.host.variables);
}

TEST_F(RunnerManagerTest, RegistersWithTheRecordsLabelsOrMacos) {
    RunnerConfig record = runner->config();
    record.labels = "macos,arm64";
    runner->setConfig(record);
    EXPECT_EQ(runner->registration("t").command().arguments.back(), "macos,arm64");
    record.labels = "";
    runner->setConfig(record);
    EXPECT_EQ(runner->registration("t").command().arguments.back(), "macos");
}

TEST_F(RunnerManagerTest, RegistrationPassesEmptyTextsOn) {
    RunnerConfig record = runner->config();
    record.name = record.instanceURL = "";
    runner->setConfig(record);
    const auto arguments = runner->registration("").command().arguments;
    EXPECT_EQ(arguments.size(), 10U);
    EXPECT_EQ(arguments[3], "");
    EXPECT_EQ(arguments[5], "");
    EXPECT_EQ(arguments[7], "");
}

TEST_F(RunnerManagerTest, RegistrationMakesTheFolderAndNothingElse) {
    std::ignore = runner->registration("t").run();
    EXPECT_EQ(world.files.foldersMade, (std::vector<std::string>{FakeWorld::dataFolder("abc")}));
    EXPECT_TRUE(world.files.atomicReplacements.empty());
    EXPECT_TRUE(world.files.appendsOpened.empty());
}

TEST_F(RunnerManagerTest, RegistrationIgnoresAFolderThatCannotBeMade) {
    world.files.failures[FakeWorld::dataFolder("abc")] = EACCES;
    EXPECT_EQ(runner->registration("t").run(), RegistrationOutcome(Registered{}));
}

TEST_F(RunnerManagerTest, RegistrationLeavesTheRunnerAlone) {
    startRunner();
    prints(declaredLine);
    int announcements = 0;
    const Subscription changes = runner->onWillChange([&] { ++announcements; });
    world.launcher.runScript.push_back(ScriptedRun{{"Error: x\n"}, failure});
    std::ignore = runner->registration("t").run();
    std::ignore = runner->registration("t").run();
    world.queue.runPosted();
    EXPECT_EQ(announcements, 0);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_TRUE(runner->isRunning());
    EXPECT_EQ(child().terminateRequests(), 0);
}

}  // namespace
}  // namespace valdorn
