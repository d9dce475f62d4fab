#include <gtest/gtest.h>

#include "ui/TextStyle.h"
#include "ui/log/LogLines.h"
#include "ui/log/LogPlaces.h"

namespace valdorn {
namespace {

// Twenty columns wide.
class LogPlacesTest : public testing::Test {
protected:
    LogPlacesTest() {
        rows.setWidth(static_cast<int>(20 * rows.wrap().columnWidth()) + 1 +
                      2 * LogRows::paddingPixels);
        rows.setLines(
            logLines({"first line", "0123456789 abcdefghij klm", "", "last e\u0301 one"}));
    }

    qreal column(int number) const {
        return LogRows::paddingPixels + number * rows.wrap().columnWidth();
    }
    LogPosition moved(LogPosition from, LogMotion motion) const {
        return LogPlaces::moved(rows, from, motion, LogPlaces::xOf(rows, from), 100);
    }

    LogRows rows{TextStyles::monospaced(TextStyle::caption)};
};

TEST_F(LogPlacesTest, RowOfAPositionIsThePartOfTheLine) {
    const auto first = LogPlaces::rowOf(rows, {1, 10});
    EXPECT_EQ(first.begin, 0);
    EXPECT_EQ(first.end, 11);
    EXPECT_EQ(first.top, rows.top(1));
    const auto second = LogPlaces::rowOf(rows, {1, 11});
    EXPECT_EQ(second.begin, 11);
    EXPECT_EQ(second.end, 25);
    EXPECT_EQ(second.top, rows.top(1) + rows.wrap().rowHeight());
    const auto last = LogPlaces::rowOf(rows, {1, 25});
    EXPECT_EQ(last.begin, 11);
}

TEST_F(LogPlacesTest, EveryPlaceLeadsBackToItsPosition) {
    for (std::size_t line = 0; line < rows.lines().size(); ++line) {
        LogPosition position{line, 0};
        while (position.line == line) {
            const auto row = LogPlaces::rowOf(rows, position);
            EXPECT_EQ(LogPlaces::positionAt(rows, LogPlaces::xOf(rows, position), row.top + 1),
                      position)
                << line << ":" << position.at;
            const LogPosition next = moved(position, LogMotion::right);
            if (next == position)
                break;
            position = next;
        }
    }
}

TEST_F(LogPlacesTest, PlaceBesideTheTextIsTheNearestPosition) {
    EXPECT_EQ(LogPlaces::positionAt(rows, -50, -50), (LogPosition{0, 0}));
    EXPECT_EQ(LogPlaces::positionAt(rows, 9999, rows.top(0) + 1), (LogPosition{0, 10}));
    EXPECT_EQ(LogPlaces::positionAt(rows, 9999, 9999), rows.end());
    EXPECT_EQ(LogPlaces::positionAt(rows, 9999, rows.top(2) + 1), (LogPosition{2, 0}));
}

TEST_F(LogPlacesTest, PlaceBehindAWrappedRowStaysInThatRow) {
    EXPECT_EQ(LogPlaces::positionAt(rows, 9999, rows.top(1) + 1), (LogPosition{1, 10}));
}

TEST_F(LogPlacesTest, LeftAndRightPassCharactersAndLineEnds) {
    EXPECT_EQ(moved({0, 0}, LogMotion::right), (LogPosition{0, 1}));
    EXPECT_EQ(moved({0, 10}, LogMotion::right), (LogPosition{1, 0}));
    EXPECT_EQ(moved({2, 0}, LogMotion::right), (LogPosition{3, 0}));
    EXPECT_EQ(moved({3, 5}, LogMotion::right), (LogPosition{3, 7}));
    EXPECT_EQ(moved(rows.end(), LogMotion::right), rows.end());
    EXPECT_EQ(moved({3, 7}, LogMotion::left), (LogPosition{3, 5}));
    EXPECT_EQ(moved({1, 0}, LogMotion::left), (LogPosition{0, 10}));
    EXPECT_EQ(moved({0, 0}, LogMotion::left), (LogPosition{0, 0}));
}

TEST_F(LogPlacesTest, WordsArePassedAtOnce) {
    EXPECT_EQ(moved({0, 0}, LogMotion::wordRight), (LogPosition{0, 5}));
    EXPECT_EQ(moved({0, 10}, LogMotion::wordLeft), (LogPosition{0, 6}));
    EXPECT_EQ(moved({0, 10}, LogMotion::wordRight), (LogPosition{1, 0}));
}

TEST_F(LogPlacesTest, UpAndDownGoByRowsAndKeepTheColumn) {
    EXPECT_EQ(moved({0, 4}, LogMotion::down), (LogPosition{1, 4}));
    EXPECT_EQ(moved({1, 4}, LogMotion::down), (LogPosition{1, 15}));
    EXPECT_EQ(moved({1, 15}, LogMotion::down), (LogPosition{2, 0}));
    EXPECT_EQ(LogPlaces::moved(rows, {2, 0}, LogMotion::down, column(4), 100), (LogPosition{3, 4}));
    EXPECT_EQ(moved({3, 4}, LogMotion::down), (LogPosition{3, 4}));
    EXPECT_EQ(moved({3, 4}, LogMotion::up), (LogPosition{2, 0}));
    EXPECT_EQ(moved({1, 15}, LogMotion::up), (LogPosition{1, 4}));
    EXPECT_EQ(moved({0, 4}, LogMotion::up), (LogPosition{0, 4}));
}

TEST_F(LogPlacesTest, PagesGoAsFarAsTheyAreHigh) {
    rows.setLines(numberedLines(100));
    const int pitch = rows.wrap().rowHeight() + LogRows::spacingPixels;
    EXPECT_EQ(LogPlaces::moved(rows, {50, 2}, LogMotion::pageDown, column(2), 10 * pitch),
              (LogPosition{60, 2}));
    EXPECT_EQ(LogPlaces::moved(rows, {50, 2}, LogMotion::pageUp, column(2), 10 * pitch),
              (LogPosition{40, 2}));
    EXPECT_EQ(LogPlaces::moved(rows, {50, 2}, LogMotion::pageUp, column(2), 99 * pitch),
              (LogPosition{0, 2}));
}

TEST_F(LogPlacesTest, RowAndTextHaveEnds) {
    EXPECT_EQ(moved({1, 4}, LogMotion::rowStart), (LogPosition{1, 0}));
    EXPECT_EQ(moved({1, 4}, LogMotion::rowEnd), (LogPosition{1, 10}));
    EXPECT_EQ(moved({1, 14}, LogMotion::rowStart), (LogPosition{1, 11}));
    EXPECT_EQ(moved({1, 14}, LogMotion::rowEnd), (LogPosition{1, 25}));
    EXPECT_EQ(moved({1, 14}, LogMotion::start), (LogPosition{0, 0}));
    EXPECT_EQ(moved({1, 14}, LogMotion::end), rows.end());
}

TEST_F(LogPlacesTest, WordIsFoundAroundAPosition) {
    const auto [begin, end] = LogPlaces::unitAt(rows, {0, 8}, LogUnit::word);
    EXPECT_EQ(begin, (LogPosition{0, 6}));
    EXPECT_EQ(end, (LogPosition{0, 10}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {0, 0}, LogUnit::word).second, (LogPosition{0, 5}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {0, 6}, LogUnit::word).first, (LogPosition{0, 6}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {0, 10}, LogUnit::word).first, (LogPosition{0, 6}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {2, 0}, LogUnit::word).second, (LogPosition{2, 0}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {1, 4}, LogUnit::line).first, (LogPosition{1, 0}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {1, 4}, LogUnit::line).second, (LogPosition{1, 25}));
    EXPECT_EQ(LogPlaces::unitAt(rows, {1, 4}, LogUnit::character).second, (LogPosition{1, 4}));
}

}  // namespace
}  // namespace valdorn
