#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/ProcessSignals.h"

namespace valdorn {
namespace {

// In a process of its own, which is to end with 0.
template <typename Life>
void expectToEndWell(Life life) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        std::_Exit(life() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(ProcessSignals, AWriteThatNobodyReadsFails) {
    expectToEndWell([] {
        int ends[2];
        std::signal(SIGPIPE, SIG_DFL);
        takeUsualSignals();
        return pipe2(ends, O_CLOEXEC) == 0 && close(ends[0]) == 0 && write(ends[1], "x", 1) < 0 &&
               errno == EPIPE;
    });
}

TEST(ProcessSignals, AHandlerStays) {
    expectToEndWell([] {
        const auto mine = [](int) {};
        std::signal(SIGPIPE, mine);
        takeUsualSignals();
        return std::signal(SIGPIPE, SIG_DFL) == static_cast<void (*)(int)>(mine);
    });
}

TEST(ProcessSignals, NoneIsBlocked) {
    expectToEndWell([] {
        sigset_t set;
        sigfillset(&set);
        sigprocmask(SIG_SETMASK, &set, nullptr);
        takeUsualSignals();
        sigprocmask(SIG_SETMASK, nullptr, &set);
        return sigisemptyset(&set) == 1;
    });
}

}  // namespace
}  // namespace valdorn
