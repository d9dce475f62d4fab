#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/Registration.h"
#include "runner/RunnerLog.h"
#include "runner/RunnerManager.h"
#include "support/FakeWorld.h"

// What a real act_runner printed, see tests/fixtures/act_runner/v1.0.8/README.md.
namespace valdorn {
namespace {

using namespace std::chrono_literals;

std::string recorded(const std::string& name) {
    std::ifstream file(VALDORN_FIXTURES "/act_runner/v1.0.8/" + name + ".txt", std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

// A runner whose child prints a recording, and everything that it showed meanwhile.
class RecordedOutput : public testing::TestWithParam<std::size_t> {
protected:
    RecordedOutput() { world.markRegistered("abc"); }

    // Plays the recording in chunks of the parameter's size.
    void play(const std::string& name) {
        runner->start();
        world.queue.runPosted();
        const std::string output = recorded(name);
        for (std::size_t from = 0; from < output.size(); from += GetParam()) {
            world.launcher.child(0).print(output.substr(from, GetParam()));
            world.queue.runPosted();
            note();
        }
    }

    void note() {
        if (statuses.back() != runner->status())
            statuses.push_back(runner->status());
        const auto add = [](std::vector<std::string>& seen, const std::optional<std::string>& now) {
            if (now && (seen.empty() || seen.back() != *now))
                seen.push_back(*now);
        };
        add(builds, runner->currentBuild());
        add(jobs, runner->currentJob());
    }

    std::string log() { return world.files.files[FakeWorld::dataFolder("abc") + "/valdorn.log"]; }

    FakeWorld world;
    std::shared_ptr<RunnerManager> runner =
        RunnerManager::create(FakeWorld::record("abc"), world.services());
    std::vector<RunnerStatus> statuses = {RunnerStatus::starting};
    std::vector<std::string> builds;
    std::vector<std::string> jobs;
};

// Read line by line, the statuses are all seen; in larger chunks some pass unseen.
INSTANTIATE_TEST_SUITE_P(ChunkSizes, RecordedOutput, testing::Values(1, 100));

TEST_P(RecordedOutput, JobTurnsTheRunnerFromStartingToBuildingAndBack) {
    play("daemon_job");
    EXPECT_EQ(statuses, (std::vector{RunnerStatus::starting, RunnerStatus::connected,
                                     RunnerStatus::building}));
    EXPECT_EQ(builds, std::vector<std::string>{"acme/site"});
    EXPECT_EQ(jobs, std::vector<std::string>{"Deploy/push"});
    EXPECT_EQ(runner->runnerVersion(), "v1.0.8");
    world.queue.advance(4s);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
    EXPECT_EQ(runner->currentBuild(), std::nullopt);
    EXPECT_EQ(runner->currentJob(), std::nullopt);
}

TEST_P(RecordedOutput, LogHoldsTheStructuredLinesAboveDebugOnly) {
    play("daemon_job");
    std::vector<std::string> expected;
    for (const std::string& line : linesOf(recorded("daemon_job"))) {
        if (line.starts_with("time=\"") && line.find(" level=debug ") == std::string::npos) {
            expected.push_back(line);
        }
    }
    EXPECT_EQ(linesOf(log()), expected);
    EXPECT_GE(expected.size(), 7U);
}

TEST_P(RecordedOutput, FailedJobIsFinishedToo) {
    play("daemon_job_fails");
    EXPECT_EQ(statuses.back(), RunnerStatus::building);
    world.queue.advance(4s);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
}

TEST_P(RecordedOutput, JobNamesThatHoldBlanksOrPaddingGiveNoLabel) {
    play("daemon_job_named");
    EXPECT_EQ(statuses.back(), RunnerStatus::building);
    EXPECT_TRUE(jobs.empty());
}

TEST_P(RecordedOutput, MatrixOnSeveralWorkersIsOneBuild) {
    play("daemon_job_matrix");
    EXPECT_EQ(statuses, (std::vector{RunnerStatus::starting, RunnerStatus::connected,
                                     RunnerStatus::building}));
    world.queue.advance(4s);
    EXPECT_EQ(runner->status(), RunnerStatus::connected);
}

TEST_P(RecordedOutput, AbsentServerIsNoBlockedNetwork) {
    play("daemon_server_away");
    EXPECT_EQ(statuses, std::vector{RunnerStatus::starting});
    EXPECT_NE(log().find("\nError: "), std::string::npos);
}

TEST_P(RecordedOutput, ServerThatGoesAwayLeavesTheRunnerConnected) {
    play("daemon_server_goes_away");
    EXPECT_EQ(statuses, (std::vector{RunnerStatus::starting, RunnerStatus::connected}));
    EXPECT_NE(log().find("failed to fetch task"), std::string::npos);
}

TEST_P(RecordedOutput, UnregisteredDaemonOnlyComplains) {
    play("daemon_not_registered");
    EXPECT_EQ(statuses, std::vector{RunnerStatus::starting});
    EXPECT_FALSE(log().empty());
}

std::string refusal(const std::string& name) {
    RegistrationOutput output;
    output.append(recorded(name));
    return output.message(1);
}

TEST(RecordedRegistration, BadTokenIsToldByTheToolsLastLine) {
    EXPECT_EQ(refusal("register_bad_token"), linesOf(recorded("register_bad_token")).back());
    EXPECT_TRUE(refusal("register_bad_token").starts_with("Error: "));
}

TEST(RecordedRegistration, EmptyInstanceIsToldByTheToolsLastLine) {
    EXPECT_EQ(refusal("register_empty_instance"), "Error: instance address is empty");
}

}  // namespace
}  // namespace valdorn
