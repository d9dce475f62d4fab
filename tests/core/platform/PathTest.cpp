#include <gtest/gtest.h>

#include "platform/Path.h"

namespace valdorn {
namespace {

TEST(AppendPathComponent, PutsOneSeparatorBetweenTheParts) {
    EXPECT_EQ(appendPathComponent("/a", "b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/a/", "b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/a", "/b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/", "b"), "/b");
}

TEST(AppendPathComponent, LeavesNoDoubledOrTrailingSeparators) {
    EXPECT_EQ(appendPathComponent("/a//b/", "runners/"), "/a/b/runners");
    EXPECT_EQ(appendPathComponent("/a", ""), "/a");
    EXPECT_EQ(appendPathComponent("a", ""), "a");
    EXPECT_EQ(appendPathComponent("/", ""), "/");
}

TEST(AppendPathComponent, KeepsDotsAsTheyAre) {
    EXPECT_EQ(appendPathComponent("/a", "../.b"), "/a/../.b");
}

}  // namespace
}  // namespace valdorn
