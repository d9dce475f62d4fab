#include <array>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/posix/LargePipes.h"

namespace valdorn {
namespace {

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
    }

    int bytes() const { return fcntl(readEnd.number(), F_GETPIPE_SZ); }

    Descriptor readEnd;
    Descriptor writeEnd;
};

TEST(LargePipes, AFewBecomeLargeAndTheOthersStayAsTheyAre) {
    LargePipes large;
    std::vector<Pipe> pipes(LargePipes::atMost + 1);
    for (int index = 0; index < LargePipes::atMost; ++index) {
        ASSERT_TRUE(large.enlarge(pipes[static_cast<std::size_t>(index)].readEnd));
        EXPECT_EQ(pipes[static_cast<std::size_t>(index)].bytes(), LargePipes::largeBytes);
    }
    const int before = pipes.back().bytes();
    EXPECT_FALSE(large.enlarge(pipes.back().readEnd));
    EXPECT_EQ(pipes.back().bytes(), before);
    large.giveBack();
    EXPECT_TRUE(large.enlarge(pipes.back().readEnd));
}

TEST(LargePipes, WhatTheKernelRefusesDoesNotCount) {
    LargePipes large;
    const Descriptor noPipe(open("/dev/null", O_RDONLY | O_CLOEXEC));
    for (int index = 0; index <= LargePipes::atMost; ++index)
        EXPECT_FALSE(large.enlarge(noPipe));
    Pipe pipe;
    EXPECT_TRUE(large.enlarge(pipe.readEnd));
}

}  // namespace
}  // namespace valdorn
