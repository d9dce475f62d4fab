#include <gtest/gtest.h>

#include "ui/TextStyle.h"
#include "ui/log/LogLines.h"
#include "ui/log/LogRows.h"
#include "ui/log/LogWalk.h"

namespace valdorn {
namespace {

class LogRowsTest : public testing::Test {
protected:
    LogRowsTest() { rows.setWidth(pixels(20)); }

    // A width that has room for that many columns.
    int pixels(int columns) const {
        return static_cast<int>(columns * rows.wrap().columnWidth()) + 1 +
               2 * LogRows::paddingPixels;
    }
    int rowHeight() const { return rows.wrap().rowHeight(); }

    LogRows rows{TextStyles::monospaced(TextStyle::caption)};
};

TEST_F(LogRowsTest, NothingIsAsHighAsItsPadding) {
    EXPECT_EQ(rows.height(), 2 * LogRows::paddingPixels);
    EXPECT_EQ(rows.end(), LogPosition{});
}

TEST_F(LogRowsTest, LinesStandBelowEachOtherWithOnePixelBetween) {
    rows.setLines(logLines({"a", "b", "c"}));
    EXPECT_EQ(rows.top(0), 6);
    EXPECT_EQ(rows.top(1), 6 + rowHeight() + 1);
    EXPECT_EQ(rows.top(2), 6 + 2 * rowHeight() + 2);
    EXPECT_EQ(rows.height(), 6 + 3 * rowHeight() + 2 + 6);
}

TEST_F(LogRowsTest, WrappedLineTakesItsRows) {
    rows.setLines(logLines({"a", "0123456789 0123456789", "c"}));
    EXPECT_EQ(rows.top(2) - rows.top(1), 2 * rowHeight() + 1);
}

TEST_F(LogRowsTest, OtherWidthWrapsAnew) {
    rows.setLines(logLines({"0123456789 0123456789", "c"}));
    rows.setWidth(pixels(30));
    EXPECT_EQ(rows.top(1) - rows.top(0), rowHeight() + 1);
    rows.setWidth(pixels(10));
    EXPECT_EQ(rows.top(1) - rows.top(0), 2 * rowHeight() + 1);
    rows.setWidth(0);
    EXPECT_EQ(rows.top(1) - rows.top(0), 20 * rowHeight() + 1);
}

TEST_F(LogRowsTest, OtherFontWrapsAnew) {
    rows.setLines(logLines({"0123456789 012345678", "c"}));
    ASSERT_EQ(rows.top(1) - rows.top(0), rowHeight() + 1);
    rows.setFont(TextStyles::monospaced(TextStyle::title2));
    EXPECT_EQ(rows.top(1) - rows.top(0), 2 * rowHeight() + 1);
}

TEST_F(LogRowsTest, FindsTheLineAtAHeight) {
    rows.setLines(logLines({"a", "0123456789 0123456789", "c"}));
    EXPECT_EQ(rows.lineAt(-100), 0U);
    EXPECT_EQ(rows.lineAt(rows.top(1) - 1), 0U);
    EXPECT_EQ(rows.lineAt(rows.top(1)), 1U);
    EXPECT_EQ(rows.lineAt(rows.top(2) - 1), 1U);
    EXPECT_EQ(rows.lineAt(rows.top(2)), 2U);
    EXPECT_EQ(rows.lineAt(rows.height() + 100), 2U);
}

TEST_F(LogRowsTest, EndIsBehindTheLastCharacter) {
    rows.setLines(logLines({"a", "bc"}));
    EXPECT_EQ(rows.end(), (LogPosition{1, 2}));
}

TEST_F(LogRowsTest, RevisionTellsChangedLines) {
    const auto before = rows.revision();
    rows.setLines(logLines({"a"}));
    EXPECT_NE(rows.revision(), before);
}

TEST_F(LogRowsTest, IsNeverNarrowerThanOneColumn) {
    rows.setLines(logLines({"abc"}));
    rows.setWidth(1);
    EXPECT_EQ(rows.rowStarts(rows.shown(0)).size(), 3U);
}

TEST_F(LogRowsTest, HoldsOnToNoLineThatIsTakenAway) {
    rows.setLines(numberedLines(1));
    const LogLine::weak_type gone = rows.lines().front();
    rows.setLines({});
    EXPECT_TRUE(gone.expired());
}

TEST_F(LogRowsTest, LinesStandWhereMeasuringAllOfThemAnewPutsThem) {
    LogWalk walk(1);
    for (int steps = 0; steps < 500; ++steps) {
        walk.step();
        rows.setLines(walk.lines);
        LogRows anew{rows.wrap().font()};
        anew.setLines(walk.lines);
        anew.setWidth(pixels(20));
        for (std::size_t line = 0; line <= walk.lines.size(); ++line)
            ASSERT_EQ(rows.top(line), anew.top(line)) << "step " << steps << ", line " << line;
    }
}

TEST_F(LogRowsTest, MeasuresTheLineThatStandsWhereALostOneStood) {
    for (int round = 0; round < 100; ++round) {
        rows.setLines(logLines({"0123456789 0123456789"}));
        EXPECT_EQ(rows.height(), 12 + 2 * rowHeight());
        rows.setLines({});
        rows.setLines(logLines({"a"}));
        EXPECT_EQ(rows.height(), 12 + rowHeight());
        rows.setLines({});
    }
}

}  // namespace
}  // namespace valdorn
