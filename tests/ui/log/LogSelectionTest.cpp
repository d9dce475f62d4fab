#include <gtest/gtest.h>

#include "ui/TextStyle.h"
#include "ui/log/LogLines.h"
#include "ui/log/LogSelection.h"

namespace valdorn {
namespace {

class LogSelectionTest : public testing::Test {
protected:
    void select(LogPosition anchor, LogPosition caret) {
        selection.place(anchor);
        selection.extendTo(caret);
    }

    void change(LogLines lines) {
        const LogLines before = rows.lines();
        rows.setLines(std::move(lines));
        selection.keepUp(before, rows);
    }

    LogRows rows{TextStyles::monospaced(TextStyle::caption)};
    LogSelection selection;
};

TEST_F(LogSelectionTest, NothingIsSelectedAtFirst) {
    EXPECT_TRUE(selection.isEmpty());
    EXPECT_EQ(selection.text(rows), QString());
}

TEST_F(LogSelectionTest, TextRunsAcrossLines) {
    rows.setLines(logLines({"one", "", "three"}));
    select({0, 1}, {2, 2});
    EXPECT_EQ(selection.text(rows), QStringLiteral("ne\n\nth"));
    select({2, 5}, {0, 0});
    EXPECT_EQ(selection.text(rows), QStringLiteral("one\n\nthree"));
    select({0, 1}, {0, 2});
    EXPECT_EQ(selection.text(rows), QStringLiteral("n"));
}

TEST_F(LogSelectionTest, TextIsThatOfTheLogNotItsSymbols) {
    rows.setLines(logLines({"\x1B[31mred\r\nend"}));
    select({0, 0}, {0, rows.shown(0).size()});
    EXPECT_EQ(selection.text(rows), QStringLiteral("\x1B[31mred\r\nend"));
}

TEST_F(LogSelectionTest, EndlessLineIsTakenWhole) {
    const std::string endless(static_cast<std::size_t>(LineWrap::longestShown) + 10, 'x');
    rows.setLines({logLine(endless), logLine("next")});
    select({0, 1}, rows.end());
    EXPECT_EQ(selection.text(rows).size(), static_cast<qsizetype>(endless.size()) - 1 + 5);
    select({0, 0}, {0, rows.shown(0).size()});
    EXPECT_EQ(selection.text(rows).size(), static_cast<qsizetype>(endless.size()));
    select({0, 0}, {0, 7});
    EXPECT_EQ(selection.text(rows).size(), 7);
}

TEST_F(LogSelectionTest, WordThatItBeganWithStaysSelectedEitherWay) {
    rows.setLines(logLines({"one two three"}));
    selection.begin({0, 4}, {0, 7});
    EXPECT_EQ(selection.text(rows), QStringLiteral("two"));
    selection.extendTo({0, 5}, {0, 5});
    EXPECT_EQ(selection.text(rows), QStringLiteral("two"));
    selection.extendTo({0, 8}, {0, 13});
    EXPECT_EQ(selection.text(rows), QStringLiteral("two three"));
    selection.extendTo({0, 0}, {0, 3});
    EXPECT_EQ(selection.text(rows), QStringLiteral("one two"));
    EXPECT_EQ(selection.caret(), (LogPosition{0, 0}));
}

TEST_F(LogSelectionTest, StaysWithItsLinesWhenOthersGo) {
    LogLines::List lines = numberedLines(5);
    rows.setLines(lines);
    select({2, 1}, {3, 4});
    lines.erase(lines.begin(), lines.begin() + 2);
    lines.push_back(logLine("new"));
    change(lines);
    EXPECT_EQ(selection.first(), (LogPosition{0, 1}));
    EXPECT_EQ(selection.caret(), (LogPosition{1, 4}));
}

TEST_F(LogSelectionTest, EndInALostLineMovesToTheNextThatIsLeft) {
    LogLines::List lines = numberedLines(5);
    rows.setLines(lines);
    select({1, 3}, {3, 4});
    lines.erase(lines.begin(), lines.begin() + 2);
    change(lines);
    EXPECT_EQ(selection.first(), (LogPosition{0, 0}));
    EXPECT_EQ(selection.caret(), (LogPosition{1, 4}));
}

TEST_F(LogSelectionTest, IsGoneWithAllItsLines) {
    rows.setLines(numberedLines(5));
    select({1, 3}, {3, 4});
    change(logLines({"other"}));
    EXPECT_TRUE(selection.isEmpty());
    EXPECT_EQ(selection.caret(), rows.end());
    change({});
    EXPECT_EQ(selection.caret(), LogPosition{});
}

}  // namespace
}  // namespace valdorn
