#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"

namespace valdorn {
namespace {

constexpr int wrong = 255;

void leaveFree(int numbers) {
    const int next = fcntl(STDERR_FILENO, F_DUPFD, STDERR_FILENO + 1);  // the lowest that is free
    close(next);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(next + numbers);
    setrlimit(RLIMIT_NOFILE, &limit);
}

int outcomeOfPipe() {
    const auto pipe = openPipe();
    if (!pipe)
        return pipe.error();
    const bool above = pipe.value().readEnd.number() > STDERR_FILENO &&
                       pipe.value().writeEnd.number() > STDERR_FILENO;
    return above ? 0 : wrong;
}

// In a process of its own without standard input and output, in which so many numbers above them
// are free: the error, 0 for a pipe above them, and `wrong` for anything else.
int outcomeOfPipe(int freeNumbers) {
    const pid_t child = fork();
    if (child < 0)
        return wrong;
    if (child == 0) {
        leaveFree(freeNumbers);
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        std::_Exit(outcomeOfPipe());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : wrong;
}

TEST(DescriptorTest, PipeStandsAboveMissingStandardStreams) {
    EXPECT_EQ(outcomeOfPipe(2), 0);
}

TEST(DescriptorTest, PipeWithoutRoomAboveThemTellsWhy) {
    EXPECT_EQ(outcomeOfPipe(1), EMFILE);
    const int withNone = outcomeOfPipe(0);
    EXPECT_TRUE(withNone == EMFILE || withNone == EINVAL);
}

}  // namespace
}  // namespace valdorn
