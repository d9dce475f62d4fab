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

// The lowest and the highest lead byte of each length; those that UTF-8 has no use for, too.
TEST(ChunkEnd, EachLeadBytePromisesItsLength) {
    for (const char* whole :
         {"a\x7F", "a\x80", "a\xBF", "a\xC0\x80", "a\xDF\xBF", "a\xE0\xA0\x80", "a\xEF\xBF\xBF",
          "a\xF0\x90\x80\x80", "a\xFF\x80\x80\x80", "a\xE2\x7F"})
        EXPECT_EQ(chunkEnd(whole), std::string_view(whole).size())
            << std::hex << int{static_cast<unsigned char>(whole[1])};
    for (const char* begun :
         {"a\xC0", "a\xDF", "a\xE0\x80", "a\xEF\x80", "a\xF0\x80\x80", "a\xFF\x80\x80"})
        EXPECT_EQ(chunkEnd(begun), 1U) << std::hex << int{static_cast<unsigned char>(begun[1])};
}

}  // namespace
}  // namespace valdorn
