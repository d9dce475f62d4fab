#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/Marks.h"

namespace valdorn::simulation {
namespace {

void comeByIfAsked(bool isAsked) {
    if (isAsked)
        reached<"mark of the test of marks">();
}

bool isUnreached() {
    const auto names = neverReached();
    return std::find(names.begin(), names.end(), "mark of the test of marks") != names.end();
}

TEST(MarksTest, AMarkIsListedBeforeAnybodyComesByAndNoMoreAfter) {
    EXPECT_TRUE(isUnreached());
    comeByIfAsked(true);
    EXPECT_FALSE(isUnreached());
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
