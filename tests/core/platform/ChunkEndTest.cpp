#include <string>

#include <gtest/gtest.h>

#include "platform/ChunkEnd.h"

namespace valdorn {
namespace {

TEST(ChunkEnd, IsBehindTheLastLineFeed) {
    EXPECT_EQ(chunkEnd("one\ntwo\nthr"), 8U);
    EXPECT_EQ(chunkEnd("one\n"), 4U);
    EXPECT_EQ(chunkEnd("\n"), 1U);
}

TEST(ChunkEnd, WithoutALineFeedIsBeforeACharacterThatIsOnlyBegun) {
    EXPECT_EQ(chunkEnd("ab\xC3"), 2U);
    EXPECT_EQ(chunkEnd("ab\xE2"), 2U);
    EXPECT_EQ(chunkEnd("ab\xE2\x80"), 2U);
    EXPECT_EQ(chunkEnd("ab\xF0\x9F\x90"), 2U);
}

TEST(ChunkEnd, WithoutALineFeedIsBehindAWholeCharacter) {
    EXPECT_EQ(chunkEnd("ab"), 2U);
    EXPECT_EQ(chunkEnd("ab\xC3\xA9"), 4U);
    EXPECT_EQ(chunkEnd("ab\xE2\x80\xA6"), 5U);
    EXPECT_EQ(chunkEnd("ab\xF0\x9F\x90\xA6"), 6U);
}

TEST(ChunkEnd, WhatIsNoTextIsCutAnywhereButNotToNothing) {
    EXPECT_EQ(chunkEnd("\xE2"), 1U);
    EXPECT_EQ(chunkEnd("\x80\x80\x80\x80\x80"), 5U);
    EXPECT_EQ(chunkEnd(std::string(1, '\xFF')), 1U);
}

}  // namespace
}  // namespace valdorn
