#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/Marks.h"

namespace valdorn::simulation {
namespace {

bool isReached(const std::string& name) {
    const auto names = neverReached();
    return std::find(names.begin(), names.end(), name) == names.end();
}

// A mark that the steps have, too: one of this test alone would be missed in every soak.
TEST(MarksTest, AMarkIsCountedAndIsNoMoreAmongThoseThatNobodyCameBy) {
    const auto before = markCounter<"quit">.times();
    reached<"quit">();
    EXPECT_EQ(markCounter<"quit">.times(), before + 1);
    EXPECT_TRUE(isReached("quit"));
}

TEST(MarksTest, AllMarksAreListedInOrderOfTheirNames) {
    std::vector<std::string> names;
    for (const MarkCounter* mark : allMarks())
        names.push_back(mark->name());
    EXPECT_GT(names.size(), 50U);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

}  // namespace
}  // namespace valdorn::simulation
