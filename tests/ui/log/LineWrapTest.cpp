#include <random>

#include <gtest/gtest.h>

#include "ui/TextStyle.h"
#include "ui/log/LineWrap.h"
#include "ui/log/LogRowLayout.h"

namespace valdorn {
namespace {

class LineWrapTest : public testing::Test {
protected:
    using Starts = std::vector<qsizetype>;

    Starts starts(std::string_view line, qreal columns) const {
        return wrap.rowStarts(LineWrap::shown(line), columns * wrap.columnWidth());
    }

    const LineWrap wrap{TextStyles::monospaced(TextStyle::caption)};
};

TEST_F(LineWrapTest, LineThatFitsIsOneRow) {
    EXPECT_EQ(starts("", 10), Starts{0});
    EXPECT_EQ(starts("0123456789", 10), Starts{0});
}

TEST_F(LineWrapTest, RowBeginsAfterTheLastBlankThatFits) {
    EXPECT_EQ(starts("one two three", 10), (Starts{0, 8}));
    EXPECT_EQ(starts("one two three", 5), (Starts{0, 4, 8}));
}

TEST_F(LineWrapTest, WordThatFitsNoRowIsCutAnywhere) {
    EXPECT_EQ(starts("0123456789abc", 10), (Starts{0, 10}));
    EXPECT_EQ(starts("x 0123456789abc", 10), (Starts{0, 2, 12}));
}

TEST_F(LineWrapTest, BlanksHangOverTheEndOfARow) {
    EXPECT_EQ(starts("0123456789   abc", 10), (Starts{0, 13}));
}

TEST_F(LineWrapTest, NoWidthAtAllGivesARowForEachCharacter) {
    EXPECT_EQ(starts("abc", 0), (Starts{0, 1, 2}));
}

TEST_F(LineWrapTest, TabReachesToTheNextStop) {
    EXPECT_EQ(starts("a\tb23456", 15), Starts{0});
    EXPECT_EQ(starts("a\tb2345678", 15), (Starts{0, 2}));
    EXPECT_EQ(starts("1234567\tb2345678", 15), (Starts{0, 8}));
    EXPECT_EQ(starts("12345678\tb", 16), (Starts{0, 9}));
}

TEST_F(LineWrapTest, LineEndInsideALineBeginsARow) {
    EXPECT_EQ(starts("a\r\nb\r\n\r\nc", 10), (Starts{0, 3, 6, 8}));
    EXPECT_EQ(starts("a\r\nb\r\n", 10), (Starts{0, 3}));
}

TEST_F(LineWrapTest, MarksStayWithTheirLetter) {
    EXPECT_EQ(starts("aaaae\xCC\x81x", 5), (Starts{0, 6}));
    EXPECT_EQ(starts("aaaae\xCC\x81x", 4), (Starts{0, 4}));
}

TEST_F(LineWrapTest, FamilyOfEmojiIsNotCut) {
    const std::string family = "\U0001F469\u200D\U0001F469\u200D\U0001F467";
    const auto begins = starts(family + family + family, 1);
    EXPECT_EQ(begins, (Starts{0, 8, 16}));
}

TEST_F(LineWrapTest, WideBlankIsABlank) {
    EXPECT_EQ(starts("abcdef\u3000ghij", 9), (Starts{0, 7}));
}

TEST_F(LineWrapTest, UnbreakableBlankIsNone) {
    EXPECT_EQ(starts("a bcd\u00A0efg", 8), (Starts{0, 2}));
}

TEST_F(LineWrapTest, NoRowIsWiderThanItMayBe) {
    const std::vector<std::string> pieces{"a",          "W",
                                          " ",          "\t",
                                          "level=info", "é",
                                          "e\u0301",    "鸟",
                                          "\U0001F426", "\U0001F1E9\U0001F1EA",
                                          "ß",          "\u3000",
                                          "…",          "http://gitea.test/acme/site/actions"};
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::string line;
        for (auto count = random() % 60; count > 0; --count)
            line += pieces[random() % pieces.size()];
        const qreal width = wrap.columnWidth() * static_cast<qreal>(12 + random() % 40);
        const QString shown = LineWrap::shown(line);
        const Starts begins = wrap.rowStarts(shown, width);
        for (std::size_t row = 0; row < begins.size(); ++row) {
            qsizetype end = row + 1 < begins.size() ? begins[row + 1] : shown.size();
            ASSERT_LT(begins[row], std::max<qsizetype>(end, 1)) << line;
            while (end > begins[row] && shown.at(end - 1).isSpace())
                --end;  // blanks may hang over
            EXPECT_LE(LogRowLayout(wrap, shown, begins[row], end).width(), width + 1)
                << line << " row " << row;
        }
    }
}

TEST_F(LineWrapTest, ControlCharactersShowTheirSymbols) {
    EXPECT_EQ(LineWrap::shown(std::string_view("\0\x1B[31m\x7F\x08", 8)),
              QString::fromUtf8("\u2400\u241B[31m\u2421\u2408"));
    EXPECT_EQ(LineWrap::shown("a\tb"), QStringLiteral("a\tb"));
    EXPECT_EQ(LineWrap::shown("a\rb\r\nc"), QString::fromUtf8("a\u240Db\r\nc"));
    EXPECT_EQ(LineWrap::shown("a\nb"), QString::fromUtf8("a\u240Ab"));
    EXPECT_EQ(LineWrap::shown("a\u2028b\u2029c"), QString::fromUtf8("a\u240Ab\u240Ac"));
}

TEST_F(LineWrapTest, CharacterAtEitherEndOfAsciiIsSeenAloneAmongPlainOnes) {
    EXPECT_EQ(LineWrap::shown("a\x7F"
                              "b"),
              QString::fromUtf8("a\u2421"
                                "b"));
    EXPECT_EQ(LineWrap::shown("a\x1F"
                              "b"),
              QString::fromUtf8("a\u241F"
                                "b"));
    EXPECT_EQ(LineWrap::shown("a ~b"), QStringLiteral("a ~b"));
}

TEST_F(LineWrapTest, EndlessLineIsShownUpToALimit) {
    const auto longest = static_cast<std::size_t>(LineWrap::longestShown);
    EXPECT_EQ(LineWrap::shown(std::string(longest, 'x')).size(), LineWrap::longestShown);
    const QString cut = LineWrap::shown(std::string(4 * longest, 'x'));
    EXPECT_EQ(cut.size(), LineWrap::longestShown);
    EXPECT_TRUE(cut.endsWith(QString::fromUtf8("x…")));
}

TEST_F(LineWrapTest, LimitCutsNoCharacterInTwo) {
    const auto longest = static_cast<std::size_t>(LineWrap::longestShown);
    const QString shown = LineWrap::shown(std::string(longest - 2, 'x') + "\U0001F426" + "xx");
    EXPECT_EQ(shown.size(), LineWrap::longestShown - 1);
    EXPECT_TRUE(shown.endsWith(QString::fromUtf8("x…")));
}

TEST_F(LineWrapTest, HeapOfMarksIsThinnedUnitByUnit) {
    std::string line = "e";
    for (int mark = 0; mark < 1000; ++mark)
        line += "\u0301";
    line += "f\u0301";
    const QString shown = LineWrap::shown(line);
    EXPECT_EQ(shown.size(), 1003);
    EXPECT_EQ(shown.at(LineWrap::mostMarks), QChar(0x301));
    EXPECT_EQ(shown.at(LineWrap::mostMarks + 1), QChar(QChar::ReplacementCharacter));
    EXPECT_EQ(shown.right(2), QString::fromUtf8("f\u0301"));
}

TEST_F(LineWrapTest, HeapOfMarksInPairsIsThinned) {
    std::string line = "e";
    for (int mark = 0; mark < 100; ++mark)
        line += "\U000E0101";
    const QString shown = LineWrap::shown(line);
    EXPECT_EQ(shown.size(), 201);
    EXPECT_EQ(shown.back(), QChar(QChar::ReplacementCharacter));
}

TEST_F(LineWrapTest, NothingTurnsTheDirectionUnseen) {
    EXPECT_EQ(LineWrap::shown("a\u202Eb\u2066c\u0085d"),
              QString::fromUtf8("a\uFFFDb\uFFFDc\uFFFDd"));
}

}  // namespace
}  // namespace valdorn
