#include <string>

#include <gtest/gtest.h>

#include "text/CharacterBreaks.h"

namespace valdorn {
namespace {

// a, e with a mark, a flag, a line end.
const std::string text = "ae\u0301\U0001F1F3\U0001F1F1\r\n";

TEST(CharacterBreaksTest, GoesOnByWhatPeoplePerceive) {
    CharacterBreaks breaks(text);
    for (const std::size_t place : {1U, 4U, 12U, 14U, 14U, 14U})
        EXPECT_EQ(breaks.next(), place);
}

TEST(CharacterBreaksTest, GoesBackTheSameWay) {
    CharacterBreaks breaks(text);
    EXPECT_EQ(breaks.last(), 14U);
    for (const std::size_t place : {12U, 4U, 1U, 0U, 0U})
        EXPECT_EQ(breaks.previous(), place);
    EXPECT_EQ(breaks.next(), 1U);
}

TEST(CharacterBreaksTest, AnEmptyTextHasNone) {
    CharacterBreaks breaks{std::string_view()};
    EXPECT_EQ(breaks.next(), 0U);
    EXPECT_EQ(breaks.previous(), 0U);
    EXPECT_EQ(breaks.last(), 0U);
}

TEST(CharacterBreaksTest, IllFormedBytesStandForThemselves) {
    CharacterBreaks breaks("\xff\xe4\xb8");
    EXPECT_EQ(breaks.next(), 1U);
    EXPECT_EQ(breaks.next(), 3U);
}

TEST(CharacterBreaksDeathTest, MoreTextThanTheyCanCountIsAMistake) {
    constexpr std::size_t mostOfIcu = 2147483647;
    EXPECT_EQ(CharacterBreaks::longestBytes, mostOfIcu);
    const std::string_view beyond("", mostOfIcu + 1);  // never looked into
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(CharacterBreaks{beyond}, "longestBytes");
}

}  // namespace
}  // namespace valdorn
