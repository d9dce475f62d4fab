#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LastLines.h"
#include "logs/LogTail.h"
#include "support/LogTexts.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;

Lines split(std::string bytes) {
    return texts(LogTail::split(std::move(bytes)));
}

TEST(LogTailSplit, CutsAtLineFeeds) {
    EXPECT_EQ(split("a\nb\n"), (Lines{"a", "b"}));
    EXPECT_EQ(split("a\nb"), (Lines{"a", "b"}));
    EXPECT_EQ(split("a"), Lines{"a"});
}

TEST(LogTailSplit, EmptyLinesAreLines) {
    EXPECT_EQ(split("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(split("\na"), (Lines{"", "a"}));
}

TEST(LogTailSplit, DropsOneEmptyPieceAtTheEnd) {
    EXPECT_EQ(split("a\n\n"), (Lines{"a", ""}));
    EXPECT_EQ(split("\n"), Lines{""});
    EXPECT_EQ(split("\n\n"), (Lines{"", ""}));
    EXPECT_EQ(split(""), Lines{});
}

TEST(LogTailSplit, ACarriageReturnKeepsTheLineFeedAfterItInTheLine) {
    EXPECT_EQ(split("a\r\nb\r\n"), Lines{"a\r\nb\r\n"});
    EXPECT_EQ(split("a\r\n\nb"), (Lines{"a\r\n", "b"}));
    EXPECT_EQ(split("a\n\r\nb"), (Lines{"a", "\r\nb"}));
    EXPECT_EQ(split("a\r\r\n\n"), Lines{"a\r\r\n"});
    EXPECT_EQ(split("\r\n"), Lines{"\r\n"});
}

TEST(LogTailSplit, OtherCarriageReturnsAreOrdinary) {
    EXPECT_EQ(split("a\rb\n\rc\r"), (Lines{"a\rb", "\rc\r"}));
}

TEST(LogTailSplit, NoByteIsDropped) {
    EXPECT_EQ(split(std::string("a\0b\nc\xFF", 6)),
              (Lines{std::string("a\0b", 3), "c\xEF\xBF\xBD"}));
    // A line feed is never a part of a character, however badly that is cut.
    EXPECT_EQ(split("\xE2\x82\n\xC3\r\n\xA9"),
              (Lines{"\xEF\xBF\xBD", "\xEF\xBF\xBD\r\n\xEF\xBF\xBD"}));
}

TEST(LogTailSplit, OtherLineEndsOfUnicodeAreOrdinary) {
    const std::string text = "a\v\f\xC2\x85\xE2\x80\xA8\xE2\x80\xA9z";
    EXPECT_EQ(split(text), Lines{text});
}

TEST(LogTailSplit, MarksDoNotJoinLines) {
    EXPECT_EQ(split("a\n\xCC\x81z"), (Lines{"a", "\xCC\x81z"}));
}

TEST(LogTailSplit, LinesMayBeManyAndLong) {
    const std::string longLine(1000000, 'x');
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += std::to_string(i) + "\n";
    const Lines lines = split(text + longLine + "\n");
    ASSERT_EQ(lines.size(), 20001U);
    EXPECT_EQ(lines.front(), "0");
    EXPECT_EQ(lines[19999], "19999");
    EXPECT_TRUE(lines.back() == longLine);
}

TEST(LastLinesTest, JoinsALineThatComesInPieces) {
    LastLines lines(3);
    for (const std::string block : {"end\n", "", " the ", "line,\nthe second, to"})
        lines.takeBefore(block);
    EXPECT_EQ(texts(lines.take()), (Lines{"line,", "the second, to the end"}));
}

TEST(LastLinesTest, JoinsACharacterThatComesInPieces) {
    LastLines lines(3);
    for (const std::string block : {"\xAC", "\x82", "\xE2"})
        lines.takeBefore(block);
    EXPECT_EQ(texts(lines.take()), Lines{"\xE2\x82\xAC"});
}

TEST(LastLinesTest, IsFullWhenTheBeginningOfTheFirstKeptLineIsKnown) {
    LastLines lines(2);
    lines.takeBefore("c\n");
    EXPECT_FALSE(lines.isFull());
    lines.takeBefore("b\n");
    EXPECT_FALSE(lines.isFull());
    lines.takeBefore("a\n");
    EXPECT_TRUE(lines.isFull());
    EXPECT_EQ(texts(lines.take()), (Lines{"b", "c"}));
}

TEST(LastLinesTest, TakesNoMoreWhenFull) {
    LastLines lines(1);
    lines.takeBefore("a\nb\nc\nd");
    lines.takeBefore("more\n");
    EXPECT_EQ(texts(lines.take()), Lines{"d"});
}

TEST(LastLinesTest, LinesAreWhereTheyWereRead) {
    LastLines lines(3);
    std::string block = "first\nthe second line\nthe third\n";
    const char* const bytes = block.data();
    lines.takeBefore(std::move(block));
    const LogLines taken = lines.take();
    ASSERT_EQ(taken.size(), 3U);
    EXPECT_EQ(static_cast<const void*>(taken[1]->data()), bytes + 6);
}

TEST(LastLinesTest, ALineIsThereForAsLongAsSomebodyHoldsIt) {
    LogLine kept;
    {
        LastLines lines(3);
        lines.takeBefore(" end\n\xFF\n");
        lines.takeBefore("first\nthe");
        kept = lines.take()[1];
    }
    EXPECT_EQ(*kept, "the end");
}

TEST(LastLinesTest, AFlawInABlockIsReplacedInItsLineOnly) {
    LastLines lines(9);
    lines.takeBefore("b\nc\xFF\n\xC3\xA9\n");
    lines.takeBefore("\xC3\xA9\xFF\na");
    EXPECT_EQ(texts(lines.take()),
              (Lines{"\xC3\xA9\xEF\xBF\xBD", "ab", "c\xEF\xBF\xBD", "\xC3\xA9"}));
}

}  // namespace
}  // namespace valdorn
