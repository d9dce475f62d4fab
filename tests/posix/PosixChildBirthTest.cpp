#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "posix/PosixStage.h"
#include "support/ChildRecorder.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

namespace {

using Step = LaunchError::Step;

// The conditions that a child is born into, and why one is not born.
class PosixChildBirthTest : public testing::Test {
protected:
    std::string outputOf(const ChildCommand& command) {
        ChildRecorder recorder;
        const auto child = launcher.launch(command, recorder.handlers());
        EXPECT_TRUE(child.ok()) << child.error().description();
        EXPECT_TRUE(recorder.waitForRelease());
        return recorder.output();
    }

    LaunchError failureOf(const ChildCommand& command) {
        ChildRecorder recorder;
        const auto child = launcher.launch(command, recorder.handlers());
        EXPECT_FALSE(child.ok());
        EXPECT_TRUE(recorder.waitForRelease());
        EXPECT_EQ(recorder.exit(), std::nullopt);
        return child.ok() ? LaunchError{} : child.error();
    }

    PosixChildLauncher launcher;
};

class FileForTest {
public:
    FileForTest(const std::string& content, mode_t mode) {
        std::ofstream(path()) << content;
        chmod(path().c_str(), mode);
    }

    std::string path() const { return folder_ / "file"; }

private:
    TemporaryFolder folder_;
};

TEST_F(PosixChildBirthTest, GetsItsArgumentsFolderAndEnvironmentAndNothingElse) {
    const ChildCommand command{
        childPath("echo"), {"two words", "", "--x=\"y\""}, "/usr", {"PATH=/bin", "EMPTY="}};
    EXPECT_EQ(outputOf(command),
              "folder /usr\nargument two words\nargument \nargument --x=\"y\"\n"
              "variable PATH=/bin\nvariable EMPTY=\nerror stream\n");
}

TEST_F(PosixChildBirthTest, GetsOneNullAndOnePipeAndNoOtherDescriptor) {
    // What libraries leave open without close-on-exec does not leak either.
    const Descriptor leaky(open("/dev/zero", O_RDONLY));
    const Descriptor leakyAndHigh(fcntl(leaky.number(), F_DUPFD, 200));
    ASSERT_TRUE(leaky && leakyAndHigh);
    std::istringstream lines(outputOf(childCommand("print_descriptors")));
    std::string input;
    std::string output;
    std::string error;
    std::string more;
    std::getline(lines, input);
    std::getline(lines, output);
    std::getline(lines, error);
    EXPECT_EQ(input, "0 /dev/null");
    EXPECT_TRUE(output.starts_with("1 pipe:[")) << output;
    EXPECT_EQ(error.substr(2), output.substr(2));
    EXPECT_FALSE(std::getline(lines, more)) << more;
}

void closeStreams() {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
}

// To be called in a process of its own, whose end tells: 0 when the child got what it is to get.
void exitWithStreamsOfAChild(PosixChildLauncher& launcher) {
    ChildRecorder recorder;
    const auto child = launcher.launch(childCommand("print_descriptors"), recorder.handlers());
    const bool hasAnswered = child.ok() && recorder.waitForRelease();
    const std::string seen = recorder.output();
    const bool isRight = seen.starts_with("0 /dev/null\n1 pipe:[") &&
                         std::count(seen.begin(), seen.end(), '\n') == 3;
    _exit(hasAnswered && isRight ? 0 : 1);
}

TEST_F(PosixChildBirthTest, GetsItsStreamsEvenWhereOursAreClosed) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            PosixChildLauncher own;
            closeStreams();
            exitWithStreamsOfAChild(own);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(PosixChildBirthTest, GetsItsStreamsEvenWhereOursWereNeverOpen) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            closeStreams();
            PosixChildLauncher own;
            exitWithStreamsOfAChild(own);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(PosixChildBirthTest, GetsNoneOfOurSignalSettings) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigaddset(&blocked, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto pipeBefore = signal(SIGPIPE, SIG_IGN);
    const auto hangupBefore = signal(SIGHUP, SIG_IGN);
    EXPECT_EQ(outputOf(childCommand("print_signals")),
              "blocked: 0\nignored: 0\ngroup of its own\n");
    signal(SIGHUP, hangupBefore);
    signal(SIGPIPE, pipeBefore);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(PosixChildBirthTest, EndsAreHeardOfEvenIfWeWereStartedIgnoringThem) {
    const auto before = signal(SIGCHLD, SIG_IGN);
    {
        PosixChildLauncher own;
        ChildRecorder recorder;
        const auto child =
            own.launch(childCommand("play", {"print:x", "exit:6"}), recorder.handlers());
        ASSERT_TRUE(child.ok());
        ASSERT_TRUE(recorder.waitForRelease());
        EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 6}));
    }
    signal(SIGCHLD, before);
}

TEST_F(PosixChildBirthTest, MissingExecutableIsExecute) {
    const LaunchError error = failureOf(childCommand("no_such_child"));
    EXPECT_EQ(error, (LaunchError{Step::execute, ENOENT, childPath("no_such_child")}));
}

TEST_F(PosixChildBirthTest, FileWithoutTheRightToRunIsExecute) {
    const FileForTest file("#!/bin/sh\n", 0644);
    EXPECT_EQ(failureOf({file.path(), {}, "/", {}}),
              (LaunchError{Step::execute, EACCES, file.path()}));
}

TEST_F(PosixChildBirthTest, FolderInPlaceOfTheExecutableIsExecute) {
    EXPECT_EQ(failureOf({"/usr", {}, "/", {}}), (LaunchError{Step::execute, EACCES, "/usr"}));
}

TEST_F(PosixChildBirthTest, FileThatIsNoProgramIsExecuteAndNotRunByAShell) {
    const FileForTest file("echo this is no program\n", 0755);
    EXPECT_EQ(failureOf({file.path(), {}, "/", {}}),
              (LaunchError{Step::execute, ENOEXEC, file.path()}));
}

TEST_F(PosixChildBirthTest, ScriptWithoutItsInterpreterIsExecute) {
    const FileForTest file("#!/no/such/interpreter\n", 0755);
    EXPECT_EQ(failureOf({file.path(), {}, "/", {}}),
              (LaunchError{Step::execute, ENOENT, file.path()}));
}

TEST_F(PosixChildBirthTest, MissingWorkingFolderIsWorkingFolder) {
    EXPECT_EQ(failureOf({childPath("echo"), {}, "/no/such/folder", {}}),
              (LaunchError{Step::workingFolder, ENOENT, "/no/such/folder"}));
}

TEST_F(PosixChildBirthTest, MissingWorkingFolderIsNamedEvenIfTheExecutableIsMissingToo) {
    EXPECT_EQ(failureOf({"/no/such/program", {}, "/no/such/folder", {}}),
              (LaunchError{Step::workingFolder, ENOENT, "/no/such/folder"}));
}

TEST_F(PosixChildBirthTest, FileInPlaceOfTheWorkingFolderIsWorkingFolder) {
    EXPECT_EQ(failureOf({childPath("echo"), {}, "/etc/passwd", {}}),
              (LaunchError{Step::workingFolder, ENOTDIR, "/etc/passwd"}));
}

// Takes root's rights from this process for as long as it lives; others have none to lose.
class WithoutRootRights {
public:
    WithoutRootRights() {
        constexpr uid_t nobody = 65534;
        if (isRoot_) {
            EXPECT_EQ(seteuid(nobody), 0);
        }
    }
    WithoutRootRights(const WithoutRootRights&) = delete;
    WithoutRootRights& operator=(const WithoutRootRights&) = delete;
    ~WithoutRootRights() {
        if (isRoot_) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }

private:
    const bool isRoot_ = geteuid() == 0;
};

TEST_F(PosixChildBirthTest, ForbiddenWorkingFolderIsWorkingFolder) {
    const TemporaryFolder parent;
    const std::string folder = parent / "closed";
    ASSERT_EQ(mkdir(folder.c_str(), 0600), 0);
    ASSERT_EQ(chmod((parent / ".").c_str(), 0711), 0);
    const WithoutRootRights likeAnybody;
    EXPECT_EQ(failureOf({"/bin/true", {}, folder, {}}),
              (LaunchError{Step::workingFolder, EACCES, folder}));
}

TEST_F(PosixChildBirthTest, TooLongAnArgumentIsExecute) {
    const std::size_t tooLongBytes = std::size_t{4} * 1024 * 1024;
    EXPECT_EQ(failureOf(childCommand("echo", {std::string(tooLongBytes, 'x')})),
              (LaunchError{Step::execute, E2BIG, childPath("echo")}));
}

// Launches with fewer and fewer free descriptors until none is left, in a process of its own: each
// of the steps that need one has its turn to fail. Returns 0 when all of them say so.
int launchWithFewDescriptors(PosixChildLauncher& own) {
    // Once with enough of them: sanitizers take descriptors of their own for what they see first.
    for (const char* child : {"play", "no_such_child"}) {
        ChildRecorder recorder;
        const auto launched = own.launch(childCommand(child), recorder.handlers());
        if (!recorder.waitForRelease())
            return 5;
    }
    int failures = 0;
    for (int limit = 40; limit > STDERR_FILENO; --limit) {
        const rlimit few{static_cast<rlim_t>(limit), static_cast<rlim_t>(limit)};
        if (setrlimit(RLIMIT_NOFILE, &few) != 0)
            return 1;
        ChildRecorder recorder;
        const auto child = own.launch(childCommand("play", {"exit:0"}), recorder.handlers());
        if (!recorder.waitForRelease())
            return 2;
        failures += child.ok() ? 0 : 1;
        if (!child.ok() &&
            (child.error().step != Step::prepare || child.error().errorNumber != EMFILE))
            return 3;
    }
    return failures > 5 ? 0 : 4;
}

TEST_F(PosixChildBirthTest, RunningOutOfDescriptorsIsPrepare) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            PosixChildLauncher own;
            _exit(launchWithFewDescriptors(own));
        },
        testing::ExitedWithCode(0), "");
}

int countDescriptors() {
    int count = 0;
    for (int number = 0; number < 1024; ++number)
        count += fcntl(number, F_GETFD) != -1 ? 1 : 0;
    return count;
}

TEST_F(PosixChildBirthTest, FailuresLeaveNoDescriptorBehind) {
    const int before = countDescriptors();
    for (int round = 0; round < 20; ++round) {
        failureOf(childCommand("no_such_child"));
        failureOf({childPath("echo"), {}, "/no/such/folder", {}});
    }
    EXPECT_EQ(countDescriptors(), before);
}

TEST_F(PosixChildBirthTest, EndedChildrenLeaveNoDescriptorBehind) {
    const int before = countDescriptors();
    for (int round = 0; round < 20; ++round)
        outputOf(childCommand("play", {"print:x"}));
    EXPECT_EQ(countDescriptors(), before);
}

}  // namespace

}  // namespace valdorn
