#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/posix/LargePipes.h"

namespace valdorn {
namespace {

// One pipe more than may be large; all but that one are.
class LargePipesTest : public testing::Test {
protected:
    static constexpr std::size_t last = LargePipes::atMost;

    LargePipesTest() {
        for (std::size_t index = 0; index <= last; ++index) {
            auto pipe = openPipe();
            EXPECT_TRUE(pipe.ok());
            pipes.push_back(std::move(pipe.value()));
        }
        formerBytes = bytes(last);
        for (std::size_t index = 0; index < last; ++index)
            ask(index);
    }

    void ask(std::size_t index) { large.enlarge(pipes[index].readEnd); }

    void askUntilOthersAreQuiet(std::size_t index) {
        for (std::uint64_t count = 0; count <= LargePipes::askingsUntilQuiet; ++count)
            ask(index);
    }

    int bytes(std::size_t index) const {
        return fcntl(pipes[index].readEnd.number(), F_GETPIPE_SZ);
    }

    bool isLarge(std::size_t index) const { return bytes(index) == LargePipes::largeBytes; }

    std::vector<bool> areLarge() const {
        std::vector<bool> all;
        for (std::size_t index = 0; index < pipes.size(); ++index)
            all.push_back(isLarge(index));
        return all;
    }

    LargePipes large;
    std::vector<Pipe> pipes;
    int formerBytes = 0;
};

TEST_F(LargePipesTest, AFewBecomeLargeAndTheNextStaysAsItIs) {
    ask(last);
    EXPECT_EQ(areLarge(), (std::vector<bool>{true, true, true, true, false}));
    EXPECT_EQ(bytes(last), formerBytes);
}

TEST_F(LargePipesTest, ForgottenOneMakesRoomForTheNext) {
    large.forget(pipes[2].readEnd);
    ask(last);
    EXPECT_TRUE(isLarge(last));
}

TEST_F(LargePipesTest, ForgettingOneThatIsNotLargeMakesNoRoom) {
    large.forget(pipes[last].readEnd);
    large.forget(Descriptor());
    ask(last);
    EXPECT_FALSE(isLarge(last));
}

TEST_F(LargePipesTest, QuietOneBecomesAsItWasForOneThatFloods) {
    askUntilOthersAreQuiet(last);
    EXPECT_EQ(areLarge(), (std::vector<bool>{false, true, true, true, true}));
    EXPECT_EQ(bytes(0), formerBytes);
}

TEST_F(LargePipesTest, NobodyIsQuietTooSoon) {
    for (std::size_t index = 0; index < last; ++index)
        ask(index);
    // The first of them has been quiet while the others asked, too.
    for (std::uint64_t count = last - 1; count < LargePipes::askingsUntilQuiet; ++count)
        ask(last);
    EXPECT_FALSE(isLarge(last));
    ask(last);
    EXPECT_TRUE(isLarge(last));
}

TEST_F(LargePipesTest, OneThatLostItsRoomGetsItBackWhenItFloodsAgain) {
    askUntilOthersAreQuiet(last);
    askUntilOthersAreQuiet(0);
    EXPECT_EQ(areLarge(), (std::vector<bool>{true, false, true, true, true}));
}

TEST_F(LargePipesTest, ThoseThatFloodAtTheSameTimeTakeNothingFromEachOther) {
    for (std::uint64_t round = 0; round < 4 * LargePipes::askingsUntilQuiet; ++round) {
        for (std::size_t index = 0; index <= last; ++index)
            ask(index);
        ASSERT_EQ(areLarge(), (std::vector<bool>{true, true, true, true, false}));
    }
}

TEST_F(LargePipesTest, QuietOneThatHoldsTooMuchKeepsItsRoomAndTheNextGivesWay) {
    const std::string much(static_cast<std::size_t>(formerBytes) + 1, 'x');
    ASSERT_EQ(write(pipes[0].writeEnd.number(), much.data(), much.size()),
              static_cast<ssize_t>(much.size()));
    askUntilOthersAreQuiet(last);
    askUntilOthersAreQuiet(last);
    EXPECT_EQ(areLarge(), (std::vector<bool>{true, false, true, true, true}));
}

TEST(LargePipes, WhatTheKernelRefusesDoesNotCount) {
    LargePipes large;
    std::vector<Descriptor> noPipes;
    for (std::size_t count = 0; count < LargePipes::atMost; ++count) {
        auto noPipe = openPath("/dev/null", O_RDONLY);
        ASSERT_TRUE(noPipe.ok());
        noPipes.push_back(std::move(noPipe.value()));
        large.enlarge(noPipes.back());
    }
    const auto pipe = openPipe();
    ASSERT_TRUE(pipe.ok());
    large.enlarge(pipe.value().readEnd);
    EXPECT_EQ(fcntl(pipe.value().readEnd.number(), F_GETPIPE_SZ), LargePipes::largeBytes);
}

}  // namespace
}  // namespace valdorn
