#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/StandardStreams.h"

namespace valdorn {
namespace {

bool isOpen(int number) {
    return fcntl(number, F_GETFD) >= 0;
}

// In a process of its own: whether the three streams are open after the two were closed, and
// nothing beyond them has been left open.
bool areMended(int closed, int alsoClosed) {
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        const int next = dup(STDERR_FILENO);  // the lowest number that is free
        close(next);
        close(closed);
        close(alsoClosed);
        openMissingStandardStreams();
        std::_Exit(isOpen(0) && isOpen(1) && isOpen(2) && !isOpen(next) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

TEST(StandardStreams, MissingOnesAreOpened) {
    EXPECT_TRUE(areMended(0, 0));
    EXPECT_TRUE(areMended(1, 2));
    EXPECT_TRUE(areMended(0, 2));
}

TEST(StandardStreams, OthersAreLeftAlone) {
    EXPECT_TRUE(areMended(-1, -1));
}

}  // namespace
}  // namespace valdorn
