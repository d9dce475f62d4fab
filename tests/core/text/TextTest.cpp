#include <string>

#include <gtest/gtest.h>

#include "text/Text.h"
#include "text/Utf8.h"

namespace valdorn {
namespace {

TEST(TextLastCharacters, GivesShortTextsWhole) {
    EXPECT_EQ(Text::lastCharacters("", 3), "");
    EXPECT_EQ(Text::lastCharacters("abc", 3), "abc");
    EXPECT_EQ(Text::lastCharacters("e\xCC\x81", 1), "e\xCC\x81");
    EXPECT_EQ(Text::lastCharacters("ae\xCC\x81", 2), "ae\xCC\x81");
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
    constexpr std::size_t longest = std::size_t{256} * 1024;
    while (marks.size() < 2 * longest)
        marks += "\xCC\x81";
    const std::string_view tail = Text::lastCharacters(marks, 1);
    EXPECT_LE(tail.size(), longest);
    EXPECT_GE(tail.size(), longest - 1);
    EXPECT_TRUE(isWellFormedUtf8(tail));
}

TEST(TextLastCharacters, BeginWithAWholeCharacterWhereverTheBoundIs) {
    constexpr std::size_t longest = std::size_t{256} * 1024;
    const std::string mark = "\xF0\x9D\x85\xA5";  // a note's stem
    for (std::size_t behind = 0; behind < mark.size(); ++behind) {
        std::string text = "e";
        while (text.size() < longest + mark.size())
            text += mark;
        text.append(behind, 'x');
        const std::string_view tail = Text::lastCharacters(text, longest);
        EXPECT_EQ(tail.substr(0, mark.size()), mark) << behind;
        EXPECT_LE(tail.size(), longest) << behind;
        EXPECT_GT(tail.size(), longest - mark.size()) << behind;
    }
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
