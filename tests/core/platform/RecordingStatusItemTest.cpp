#include <gtest/gtest.h>

#include "support/RecordingStatusItem.h"

namespace valdorn {
namespace {

TEST(RecordingStatusItemTest, CountsChangesOfTheIconOnly) {
    RecordingStatusItem item;
    item.clearIcon();
    EXPECT_EQ(item.iconChanges, 0);
    const StatusIcon bird{"bird", SystemColor::green, "Idle"};
    item.setIcon(bird);
    item.setIcon(bird);
    EXPECT_EQ(item.iconChanges, 1);
    item.setIcon({"bird", SystemColor::red, "Idle"});
    item.clearIcon();
    EXPECT_EQ(item.iconChanges, 3);
    EXPECT_EQ(item.icon, std::nullopt);
}

TEST(RecordingStatusItemTest, StartingASpinnerTwiceStartsItOnce) {
    RecordingStatusItem item;
    item.stopSpinner();
    item.startSpinner();
    item.startSpinner();
    EXPECT_TRUE(item.isSpinning());
    item.stopSpinner();
    item.stopSpinner();
    EXPECT_FALSE(item.isSpinning());
    EXPECT_EQ(item.spinnerStarts, 1);
    EXPECT_EQ(item.spinnerStops, 1);
}

}  // namespace
}  // namespace valdorn
