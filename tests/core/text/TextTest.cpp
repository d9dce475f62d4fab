#include <string>

#include <gtest/gtest.h>

#include "text/Text.h"

namespace valdorn {
namespace {

TEST(TextUtf8, TakesWellFormedText) {
    for (const std::string text : {"", "plain ascii, longer than a word", "\xC3\xA9",
                                   "\xE2\x80\xA6", "\xF0\x9F\x90\xA6 bird", "\x7F"}) {
        EXPECT_TRUE(Text::isUtf8(text)) << text;
        EXPECT_TRUE(Text::isUtf8("12345678" + text + "12345678")) << text;
    }
    EXPECT_TRUE(Text::isUtf8(std::string(3, '\0')));
}

TEST(TextUtf8, RefusesEverythingElse) {
    for (const std::string text : {"\xFF", "\x80", "\xC3", "\xE2\x80", "\xF0\x9F\x90", "\xC0\xAF",
                                   "\xE0\x80\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(Text::isUtf8(text));
        EXPECT_FALSE(Text::isUtf8("1234567" + text));
        EXPECT_FALSE(Text::isUtf8("12345678" + text + "x"));
    }
}

TEST(TextLastCharacters, GivesShortTextsWhole) {
    EXPECT_EQ(Text::lastCharacters("", 3), "");
    EXPECT_EQ(Text::lastCharacters("abc", 3), "abc");
    EXPECT_EQ(Text::lastCharacters("e\xCC\x81", 1), "e\xCC\x81");
}

TEST(TextLastCharacters, CountsWhatPeoplePerceive) {
    EXPECT_EQ(Text::lastCharacters("abcdef", 2), "ef");
    EXPECT_EQ(Text::lastCharacters("ab\r\nc", 2), "\r\nc");
    EXPECT_EQ(Text::lastCharacters("abe\xCC\x81", 1), "e\xCC\x81");
    // Two regional indicators make one flag.
    const std::string flag = "\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA";
    EXPECT_EQ(Text::lastCharacters("ab" + flag + flag, 2), flag + flag);
    // A family of three people and two joiners.
    const std::string family =
        "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7";
    EXPECT_EQ(Text::lastCharacters("ab" + family, 1), family);
}

TEST(TextLastCharacters, AreBoundedHoweverManyMarksTheyHave) {
    std::string marks = "e";
    while (marks.size() < 2 * Text::longestTailBytes)
        marks += "\xCC\x81";
    const std::string_view tail = Text::lastCharacters(marks, 1);
    EXPECT_LE(tail.size(), Text::longestTailBytes);
    EXPECT_GE(tail.size(), Text::longestTailBytes - 1);
    EXPECT_TRUE(Text::isUtf8(tail));
}

TEST(TextCompleteLength, LeavesOutACharacterThatHasOnlyBegun) {
    EXPECT_EQ(Text::completeLength(""), 0U);
    EXPECT_EQ(Text::completeLength("abc"), 3U);
    EXPECT_EQ(Text::completeLength("a\xC3\xA9"), 3U);
    EXPECT_EQ(Text::completeLength("a\xC3"), 1U);
    EXPECT_EQ(Text::completeLength("a\xE2\x80"), 1U);
    EXPECT_EQ(Text::completeLength("a\xE2\x80\xA6"), 4U);
    EXPECT_EQ(Text::completeLength("a\xF0\x9F\x90"), 1U);
    EXPECT_EQ(Text::completeLength("\x80\x80\x80\x80\x80"), 5U);  // no beginning in reach: broken
}

}  // namespace
}  // namespace valdorn
