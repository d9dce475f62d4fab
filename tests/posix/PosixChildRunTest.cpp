#include <cerrno>
#include <future>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "children/ChildTools.h"
#include "posix/PosixStage.h"
#include "posix/ToldGrandchild.h"

namespace valdorn {

namespace {

// Children that a thread waits for.
class PosixChildRunTest : public testing::Test {
protected:
    using Outcome = Result<ChildExit, LaunchError>;

    PosixChildLauncher launcher;
    std::string output;
    const std::function<void(std::string_view)> collect = [this](std::string_view chunk) {
        output += chunk;
    };
};

TEST_F(PosixChildRunTest, ReadsATalkativeChildToItsEnd) {
    const auto outcome = launcher.run(childCommand("flood", {"1000000"}), collect);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value(), (ChildExit{ChildExit::Kind::exited, 0}));
    EXPECT_EQ(output, children::pattern(1000000));
}

TEST_F(PosixChildRunTest, TellsASignalFromAnExitCode) {
    const auto outcome = launcher.run(childCommand("play", {"raise:9"}), collect);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value(), (ChildExit{ChildExit::Kind::signalled, 9}));
}

TEST_F(PosixChildRunTest, FailedLaunchesSayWhy) {
    const auto outcome = launcher.run(childCommand("no_such_child"), collect);
    ASSERT_FALSE(outcome.ok());
    EXPECT_EQ(outcome.error(),
              (LaunchError{LaunchError::Step::execute, ENOENT, childPath("no_such_child")}));
}

TEST_F(PosixChildRunTest, ReadsOnAfterTheExitWhileAGrandchildKeepsThePipe) {
    pid_t grandchild = 0;
    // The end of the stream is what counts here, and it comes with the end of the grandchild.
    const auto outcome =
        launcher.run(childCommand("leave_grandchild"), [&](std::string_view chunk) {
            output += chunk;
            grandchild = toldGrandchild(output);
            kill(grandchild, SIGTERM);
        });
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value(), (ChildExit{ChildExit::Kind::exited, 3}));
}

TEST_F(PosixChildRunTest, WaitsForTheExitAfterTheEndOfTheOutput) {
    const ChildCommand command{"/bin/sh", {"-c", "echo bye; exec >&- 2>&-; exit 8"}, "/", {}};
    const auto outcome = launcher.run(command, collect);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value(), (ChildExit{ChildExit::Kind::exited, 8}));
    EXPECT_EQ(output, "bye\n");
}

TEST_F(PosixChildRunTest, InterruptionFromAnotherThreadAsksTheChildToEndAndReapsItLater) {
    std::promise<std::string> greeting;
    std::thread waiter([&] {
        const ChildCommand command{
            "/bin/sh", {"-c", "echo $$; exec " + childPath("hang")}, "/", {}};
        bool isFirst = true;
        const auto outcome = launcher.run(command, [&](std::string_view chunk) {
            if (std::exchange(isFirst, false))
                greeting.set_value(std::string(chunk));
        });
        EXPECT_EQ(outcome.error().step, LaunchError::Step::interrupted);
    });
    const std::int64_t id = std::stoll(greeting.get_future().get());
    ChildRecorder recorder;
    const auto later =
        launcher.launch(childCommand("play", {"print:ready", "await"}), recorder.handlers());
    ASSERT_TRUE(recorder.waitForBytes(5));
    launcher.shutDown();
    waiter.join();
    // Its end is noticed by the reader that took it over, in order with that of a later child.
    ASSERT_TRUE(waitForEndOf(id));
    kill(static_cast<pid_t>(later.value()->id()), SIGUSR1);
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_TRUE(isGone(id));
}

TEST_F(PosixChildRunTest, NothingIsStartedAfterAnInterruption) {
    launcher.shutDown();
    // A launch would fail otherwise.
    const auto outcome = launcher.run(childCommand("no_such_child"), collect);
    ASSERT_FALSE(outcome.ok());
    EXPECT_EQ(outcome.error(), (LaunchError{LaunchError::Step::interrupted, 0, {}}));
}

TEST_F(PosixChildRunTest, InterruptionReachesTheWaitForTheExitToo) {
    std::promise<std::int64_t> started;
    std::thread waiter([&] {
        const ChildCommand command{
            "/bin/sh",
            {"-c", "echo $$; exec >&- 2>&-; exec " + childPath("play") + " await"},
            "/",
            {}};
        const auto outcome = launcher.run(command, [&](std::string_view chunk) {
            started.set_value(std::stoll(std::string(chunk)));
        });
        EXPECT_EQ(outcome.error().step, LaunchError::Step::interrupted);
    });
    const std::int64_t id = started.get_future().get();
    launcher.shutDown();
    waiter.join();
    EXPECT_TRUE(waitForEndOf(id));
}

}  // namespace

}  // namespace valdorn
