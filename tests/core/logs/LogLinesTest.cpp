#include <memory>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "logs/LogLine.h"

namespace valdorn {
namespace {

LogLine line(std::string_view text) {
    return std::make_shared<const std::string_view>(text);
}

TEST(LogLinesTest, CopiesShareTheList) {
    const LogLines lines{line("a"), line("b")};
    const LogLines copy = lines;
    EXPECT_EQ(&copy[0], &lines[0]);
    EXPECT_EQ(lines[0].use_count(), 1);
}

TEST(LogLinesTest, AreEqualWhenTheSameObjectsStandInTheSameOrder) {
    const LogLine a = line("a");
    const LogLine b = line("b");
    EXPECT_EQ((LogLines{a, b}), (LogLines{a, b}));
    EXPECT_NE((LogLines{a, b}), (LogLines{b, a}));
    EXPECT_NE((LogLines{a, b}), (LogLines{a}));
    EXPECT_NE(LogLines{a}, LogLines{line("a")});
    EXPECT_EQ(LogLines(), LogLines(LogLines::List()));
}

TEST(LogLinesTest, NoneAreLeftWhenTheyHaveMoved) {
    LogLines lines{line("a")};
    const LogLines moved = std::move(lines);
    EXPECT_EQ(moved.size(), 1U);
    EXPECT_TRUE(lines.empty());  // NOLINT(bugprone-use-after-move): that is the question
    EXPECT_EQ(lines.begin(), lines.end());
}

TEST(LogLinesTest, LetGoOfTheirLinesWithTheLastCopy) {
    LogLines lines{line("a")};
    const LogLine::weak_type gone = lines.front();
    {
        const LogLines copy = lines;
        lines = {};
        EXPECT_FALSE(gone.expired());
    }
    EXPECT_TRUE(gone.expired());
}

}  // namespace
}  // namespace valdorn
