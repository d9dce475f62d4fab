#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

#include "children/ChildTools.h"
#include "posix/PosixStage.h"
#include "posix/ToldGrandchild.h"
#include "support/ChildRecorder.h"

namespace valdorn {

namespace {

constexpr ChildExit byTermination{ChildExit::Kind::signalled, SIGTERM};

// How children live and end, and what the launcher costs meanwhile.
class PosixChildLifeTest : public testing::Test {
protected:
    using Credits = ChildRecorder::Credits;

    ~PosixChildLifeTest() override {
        launcher.reset();
        for (const std::int64_t id : strangers)
            kill(static_cast<pid_t>(id), SIGKILL);
    }

    std::unique_ptr<ChildProcess> launch(const ChildCommand& command, ChildRecorder& recorder) {
        auto child = launcher->launch(command, recorder.handlers());
        EXPECT_TRUE(child.ok()) << child.error().description();
        return child.ok() ? std::move(child.value()) : nullptr;
    }

    ChildRecorder& newRecorder(Credits credits = Credits::dropAtOnce) {
        recorders.push_back(std::make_unique<ChildRecorder>(credits));
        return *recorders.back();
    }

    // Afterwards the reading thread has noticed whatever happened before.
    void letTheReaderGoRound() {
        ChildRecorder& recorder = newRecorder();
        const auto child = launch(childCommand("play", {"exit:0"}), recorder);
        EXPECT_TRUE(recorder.waitForRelease());
    }

    // Passes real time asleep, as only the kernel can tell that nobody else has worked meanwhile.
    static void idle(std::chrono::milliseconds time) {
        poll(nullptr, 0, static_cast<int>(time.count()));
    }

    static std::chrono::nanoseconds cpuTime() {
        timespec used{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
        return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
    }

    // CPU time of this process within half a second in which it has nothing to do.
    static std::chrono::nanoseconds idleCost() {
        const auto before = cpuTime();
        idle(std::chrono::milliseconds(500));
        return cpuTime() - before;
    }
    // Far below the half second that a spinning thread takes, far above what sleeping takes.
    static constexpr std::chrono::milliseconds allowedIdleCost{100};

    std::vector<std::unique_ptr<ChildRecorder>> recorders;  // outlive the launcher
    std::unique_ptr<PosixChildLauncher> launcher = std::make_unique<PosixChildLauncher>();
    std::vector<std::int64_t> strangers;  // processes that no launcher ends
};

TEST_F(PosixChildLifeTest, ExitIsReportedWhileAGrandchildKeepsThePipe) {
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("leave_grandchild"), recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 3}));
    strangers.push_back(toldGrandchild(recorder.output()));
    EXPECT_FALSE(isGone(strangers.back()));
}

TEST_F(PosixChildLifeTest, AChattyGrandchildCannotPutOffTheExit) {
    ChildRecorder& recorder = newRecorder(Credits::dropAtOnce);
    const auto child = launch(childCommand("leave_grandchild", {"chatter"}), recorder);
    ASSERT_TRUE(recorder.waitForExit());
    const pid_t grandchild = toldGrandchild(recorder.output());
    // Nobody reads any more: it dies of SIGPIPE.
    EXPECT_TRUE(waitForEndOf(grandchild));
    EXPECT_EQ(recorder.callsAfterExit(), 0);
}

TEST_F(PosixChildLifeTest, OutputRightBeforeTheExitIsNeverLost) {
    for (int round = 0; round < 1000; ++round) {
        ChildRecorder recorder;
        const auto child =
            launch(childCommand("play", {"print:last", "print: words", "exit:1"}), recorder);
        ASSERT_TRUE(recorder.waitForRelease());
        ASSERT_EQ(recorder.output(), "last words") << "round " << round;
    }
}

TEST_F(PosixChildLifeTest, AFullPipeAtTheExitIsHandedOverWhole) {
    // More than one buffer is under way when the child dies.
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("die_while_reading"), recorder);
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.output(), children::pattern(std::size_t{200} * 1024) + "\nhalf a li");
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::signalled, SIGKILL}));
}

TEST_F(PosixChildLifeTest, WhatWasReadableAtTheExitIsHeldBackAndThenHandedOver) {
    ChildRecorder& recorder = newRecorder(Credits::keep);
    const auto child =
        launch(childCommand("play", {"fill:262145", "await", "fill:60000"}), recorder);
    ASSERT_TRUE(recorder.waitForBytes(262145));
    kill(static_cast<pid_t>(child->id()), SIGUSR1);
    ASSERT_TRUE(waitForEndOf(child->id()));
    letTheReaderGoRound();
    EXPECT_TRUE(isGone(child->id())) << "reaped although held back";
    EXPECT_EQ(recorder.output().size(), 262145u);
    EXPECT_EQ(recorder.exit(), std::nullopt);
    recorder.dropCredits();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), children::pattern(262145) + children::pattern(60000));
}

TEST_F(PosixChildLifeTest, WhatAGrandchildWritesAfterTheExitIsDiscarded) {
    ChildRecorder& recorder = newRecorder(Credits::keep);
    const auto child = launch(
        childCommand("play", {"leave:too late", "fill:262145", "await", "print:end"}), recorder);
    ASSERT_TRUE(recorder.waitForBytes(262145));
    const pid_t grandchild = toldGrandchild(recorder.output());
    kill(static_cast<pid_t>(child->id()), SIGUSR1);
    ASSERT_TRUE(waitForEndOf(child->id()));
    letTheReaderGoRound();
    kill(grandchild, SIGUSR1);
    ASSERT_TRUE(waitForEndOf(grandchild));
    recorder.dropCredits();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_TRUE(recorder.output().ends_with("end"));
}

TEST_F(PosixChildLifeTest, AFloodIsHeldBackAndNothingIsLost) {
    constexpr std::size_t floodBytes = std::size_t{3} * 1024 * 1024;
    ChildRecorder& recorder = newRecorder(Credits::keep);
    const auto child = launch(childCommand("flood", {std::to_string(floodBytes)}), recorder);
    ASSERT_TRUE(recorder.waitForBytes(maxPendingOutputBytes + 1));
    letTheReaderGoRound();
    EXPECT_LE(recorder.output().size(), maxPendingOutputBytes + std::size_t{64} * 1024);
    EXPECT_TRUE(child->isRunning());
    recorder.dropCredits();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), children::pattern(floodBytes));
}

TEST_F(PosixChildLifeTest, AFloodIsCutBetweenItsLines) {
    // Lines of 7 bytes of which 3 are one character, in writes that a pipe takes whole.
    std::string text;
    while (text.size() < 3500)
        text += "ab \xE2\x80\xA6\n";
    constexpr int writes = 400;
    ChildRecorder& recorder = newRecorder(Credits::keep);
    ChildHandlers handlers = recorder.handlers();
    std::atomic<int> cutLines = 0;
    handlers.onOutput = [&cutLines, record = std::move(handlers.onOutput)](std::string_view chunk,
                                                                           OutputCredit credit) {
        cutLines += chunk.ends_with('\n') ? 0 : 1;
        record(chunk, std::move(credit));
    };
    const auto child = launcher->launch(
        childCommand("play", std::vector<std::string>(writes, "print:" + text)), handlers);
    ASSERT_TRUE(child.ok());
    // Held back, so that the pipe is full and the buffer is too small for what is there.
    ASSERT_TRUE(recorder.waitForBytes(maxPendingOutputBytes + 1));
    letTheReaderGoRound();
    recorder.dropCredits();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output().size(), writes * text.size());
    EXPECT_EQ(cutLines, 0);
}

TEST_F(PosixChildLifeTest, WhatAFloodEndsWithArrivesWithoutALineEnd) {
    const std::string text = std::string(50'000, 'x') + "\nno end";
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("play", {"print:" + text, "await"}), recorder);
    ASSERT_TRUE(recorder.waitForBytes(text.size())) << "while the child lives";
    EXPECT_EQ(recorder.output(), text);
    child->terminate();
    ASSERT_TRUE(recorder.waitForExit());
}

TEST_F(PosixChildLifeTest, BytesThatComeOneByOneArriveInOrder) {
    const std::string text = "one byte after the other, in many small writes";
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("play", {"slow:" + text}), recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), text);
}

TEST_F(PosixChildLifeTest, EveryByteButNulPassesUnchanged) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("play", {"print:" + bytes}), recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), bytes);
}

TEST_F(PosixChildLifeTest, NulBytesPassUnchanged) {
    ChildRecorder& recorder = newRecorder();
    ChildCommand command{"/usr/bin/head", {"-c", "1000", "/dev/zero"}, "/", {}};
    const auto child = launch(command, recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.output(), std::string(1000, '\0'));
}

TEST_F(PosixChildLifeTest, AChildThatIgnoresTheRequestIsNotForced) {
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("ignore_term"), recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    child->terminate();
    ASSERT_TRUE(recorder.waitForText("asked"));
    child->terminate();
    ASSERT_TRUE(recorder.waitForText("asked\nasked"));
    EXPECT_TRUE(child->isRunning());
    kill(static_cast<pid_t>(child->id()), SIGKILL);
    ASSERT_TRUE(recorder.waitForExit());
}

TEST_F(PosixChildLifeTest, TheRequestGoesToTheChildAndNotToItsDescendants) {
    ChildRecorder& recorder = newRecorder();
    ChildCommand command{
        "/bin/sh", {"-c", childPath("hang") + " & echo grandchild $!; wait"}, "/", {}};
    const auto child = launch(command, recorder);
    ASSERT_TRUE(recorder.waitForText("grandchild "));
    ASSERT_TRUE(recorder.waitForText("ready\n"));
    strangers.push_back(toldGrandchild(recorder.output()));
    child->terminate();
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_FALSE(isGone(strangers.back()));
}

TEST_F(PosixChildLifeTest, IsRunningTellsTheEndBeforeTheReaderHasNoticed) {
    std::promise<void> isBusy;
    std::promise<void> mayGoOn;
    ChildRecorder& other = newRecorder();
    const auto waiting = launch(childCommand("hang"), other);
    ASSERT_TRUE(other.waitForText("ready"));
    const auto busy =
        launcher->launch(childCommand("play", {"print:x"}), {[&](std::string_view, OutputCredit) {
                                                                 isBusy.set_value();
                                                                 mayGoOn.get_future().wait();
                                                             },
                                                             [](ChildExit) {}});
    ASSERT_TRUE(busy.ok());
    isBusy.get_future().wait();
    waiting->terminate();
    ASSERT_TRUE(waitForEndOf(waiting->id()));
    EXPECT_FALSE(waiting->isRunning());
    EXPECT_EQ(other.exit(), std::nullopt);
    mayGoOn.set_value();
    ASSERT_TRUE(other.waitForExit());
    EXPECT_EQ(other.exit(), byTermination);
}

TEST_F(PosixChildLifeTest, NoZombieStays) {
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("play", {"exit:0"}), recorder);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_TRUE(isGone(child->id()));
    siginfo_t info{};
    EXPECT_NE(waitid(P_PID, static_cast<id_t>(child->id()), &info, WEXITED | WNOHANG), 0);
}

TEST_F(PosixChildLifeTest, AnExitReapedBySomebodyElseIsStillReported) {
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("hang"), recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    const auto before = signal(SIGCHLD, SIG_IGN);  // the kernel reaps
    child->terminate();
    EXPECT_TRUE(recorder.waitForExit());
    signal(SIGCHLD, before);
    EXPECT_EQ(recorder.exit()->kind, ChildExit::Kind::exited);
    EXPECT_FALSE(child->isRunning());
}

TEST_F(PosixChildLifeTest, DroppingTheHandleNeitherKillsNorWaits) {
    ChildRecorder& recorder = newRecorder();
    auto child = launch(childCommand("hang"), recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    const std::int64_t id = child->id();
    child.reset();
    letTheReaderGoRound();
    EXPECT_FALSE(isGone(id));
    kill(static_cast<pid_t>(id), SIGTERM);
    ASSERT_TRUE(recorder.waitForExit());
    EXPECT_EQ(recorder.exit(), byTermination);
}

TEST_F(PosixChildLifeTest, ChildrenLiveOnWithoutTheLauncherAndCanStillBeAsked) {
    ChildRecorder& recorder = newRecorder();
    const auto child = launch(childCommand("hang"), recorder);
    ASSERT_TRUE(recorder.waitForText("ready"));
    launcher.reset();
    EXPECT_TRUE(recorder.waitForRelease());
    EXPECT_TRUE(child->isRunning());
    child->terminate();
    EXPECT_TRUE(waitForEndOf(child->id()));
    EXPECT_FALSE(child->isRunning());
    EXPECT_EQ(recorder.exit(), std::nullopt);
    EXPECT_EQ(waitpid(static_cast<pid_t>(child->id()), nullptr, 0), child->id());
}

TEST_F(PosixChildLifeTest, HandlersMayLaunch) {
    ChildRecorder& second = newRecorder();
    ChildRecorder& first = newRecorder();
    std::unique_ptr<ChildProcess> relaunched;
    ChildHandlers handlers = first.handlers();
    handlers.onExit = [&, inner = handlers.onExit](ChildExit exit) {
        relaunched = launch(childCommand("play", {"print:again"}), second);
        inner(exit);
    };
    const auto child = launcher->launch(childCommand("play", {"print:once"}), std::move(handlers));
    ASSERT_TRUE(first.waitForExit());
    ASSERT_TRUE(second.waitForExit());
    EXPECT_EQ(second.output(), "again");
}

TEST_F(PosixChildLifeTest, SleepsWhileAFloodIsHeldBack) {
    ChildRecorder& recorder = newRecorder(Credits::keep);
    const auto child = launch(childCommand("flood"), recorder);
    ASSERT_TRUE(recorder.waitForBytes(maxPendingOutputBytes + 1));
    letTheReaderGoRound();
    EXPECT_LT(idleCost(), allowedIdleCost);
    child->terminate();
}

TEST_F(PosixChildLifeTest, SleepsWhileAHeldBackPipeHasNoWriterLeft) {
    ChildRecorder& recorder = newRecorder(Credits::keep);
    const ChildCommand command{
        "/bin/sh",
        {"-c", "head -c 330000 /dev/zero; exec >&- 2>&-; exec " + childPath("play") + " await"},
        "/",
        {"PATH=/usr/bin:/bin"}};
    const auto child = launch(command, recorder);
    ASSERT_TRUE(recorder.waitForBytes(maxPendingOutputBytes + 1));
    letTheReaderGoRound();
    EXPECT_LT(idleCost(), allowedIdleCost);
    child->terminate();
}

int countOpenDescriptors() {
    int count = 0;
    for (int number = 0; number < 1024; ++number)
        count += fcntl(number, F_GETFD) != -1 ? 1 : 0;
    return count;
}

TEST_F(PosixChildLifeTest, GivesThePipeBackAtTheEndOfTheOutput) {
    ChildRecorder& recorder = newRecorder();
    const int before = countOpenDescriptors();
    const ChildCommand command{
        "/bin/sh",
        {"-c", "echo bye; exec >&- 2>&-; exec " + childPath("play") + " await"},
        "/",
        {}};
    const auto child = launch(command, recorder);
    ASSERT_TRUE(recorder.waitForText("bye"));
    // The shell takes a moment to close it; each round takes longer than that.
    for (int round = 0; round < 1000 && countOpenDescriptors() > before + 1; ++round)
        letTheReaderGoRound();
    EXPECT_EQ(countOpenDescriptors(), before + 1) << "the pidfd is left";
    child->terminate();
    EXPECT_TRUE(recorder.waitForExit());
}

TEST_F(PosixChildLifeTest, SleepsAfterTheEndOfTheOutput) {
    ChildRecorder& recorder = newRecorder();
    const ChildCommand command{
        "/bin/sh",
        {"-c", "echo bye; exec >&- 2>&-; exec " + childPath("play") + " await"},
        "/",
        {}};
    const auto child = launch(command, recorder);
    ASSERT_TRUE(recorder.waitForText("bye"));
    letTheReaderGoRound();
    EXPECT_LT(idleCost(), allowedIdleCost);
    EXPECT_TRUE(child->isRunning());
    EXPECT_EQ(recorder.exit(), std::nullopt);
    child->terminate();
    EXPECT_TRUE(recorder.waitForExit());
}

int countThreads() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Threads:"))
            return std::atoi(line.c_str() + 8);
    }
    return 0;
}

TEST_F(PosixChildLifeTest, HoldsAThousandChildrenOnOneThread) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit usual{1024, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    const int threads = countThreads();
    std::vector<std::unique_ptr<ChildProcess>> crowd;
    for (int count = 0; count < 1000; ++count) {
        crowd.push_back(launch(childCommand("hang"), newRecorder()));
        ASSERT_TRUE(crowd.back()) << count;
    }
    for (const auto& recorder : recorders)
        ASSERT_TRUE(recorder->waitForText("ready\n"));
    EXPECT_EQ(countThreads(), threads);
    for (const auto& child : crowd)
        child->terminate();
    for (const auto& recorder : recorders) {
        ASSERT_TRUE(recorder->waitForExit());
        ASSERT_EQ(recorder->exit(), byTermination);
    }
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(PosixChildLifeTest, LeavesTheDescriptorLimitAloneForAFewChildren) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit usual{1024, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    letTheReaderGoRound();
    rlimit after{};
    getrlimit(RLIMIT_NOFILE, &after);
    EXPECT_EQ(after.rlim_cur, usual.rlim_cur);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(PosixChildLifeTest, ChildThatPrintsAfterTheLauncherIsGoneEndsAsItWants) {
    // More than a pipe holds, so that somebody has to read.
    ChildRecorder& recorder = newRecorder();
    const auto child =
        launch(childCommand("play", {"print:ready", "await", "fill:1048576", "exit:7"}), recorder);
    ASSERT_TRUE(recorder.waitForBytes(5));
    const auto id = static_cast<pid_t>(child->id());
    launcher.reset();
    kill(id, SIGUSR1);
    int status = 0;
    ASSERT_EQ(waitpid(id, &status, 0), id);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace

}  // namespace valdorn
