#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/MenuModel.h"
#include "platform/StatusItem.h"

namespace valdorn {

// What every StatusItem does. The fixture has:
//   StatusItem& item();
//   void showBar();                        // the bar comes; there is none at first
//   std::optional<StatusIcon> icon();      // that the bar shows
//   std::optional<int> spinnerLength();    // of the item while the bar shows a spinner
//   int changesSent();                     // how often the bar was told something new
//   std::vector<std::string> menuTitles(); // of the entries in the bar's menu
//   void choose(std::size_t entry);        // in the bar's menu
// What the bar shows is looked at when the main queue has nothing left that is due.
template <typename Fixture>
class StatusItemContract : public testing::Test {
protected:
    StatusItem& item() { return fixture.item(); }

    const StatusIcon gray{"bird", SystemColor::secondary, "Valdorn"};
    const StatusIcon green{"bird.fill", SystemColor::green, "Valdorn"};
    std::string chosen;
    MenuModel menu{
        {{"status", "Status: —", false, false, false, 0, nullptr},
         {"quit", "Quit Valdorn", true, false, false, 'q', [this] { chosen = "quit"; }}}};
    Fixture fixture;  // borrows the menu
};

TYPED_TEST_SUITE_P(StatusItemContract);

TYPED_TEST_P(StatusItemContract, WhatWasSetLastBeforeTheBarCameIsWhatItShows) {
    this->item().setIcon(this->gray);
    this->item().setIcon(this->green);
    this->fixture.showBar();
    EXPECT_EQ(this->fixture.icon(), this->green);
    EXPECT_EQ(this->fixture.spinnerLength(), std::nullopt);
}

TYPED_TEST_P(StatusItemContract, ASpinnerStartedBeforeTheBarCameIsWhatItShows) {
    this->item().startSpinner();
    this->item().setLength(24);
    EXPECT_TRUE(this->item().isSpinning());
    this->fixture.showBar();
    EXPECT_EQ(this->fixture.spinnerLength(), 24);
}

TYPED_TEST_P(StatusItemContract, ShowsTheIconUntilItIsCleared) {
    this->fixture.showBar();
    EXPECT_EQ(this->fixture.icon(), std::nullopt);
    this->item().setIcon(this->gray);
    EXPECT_EQ(this->fixture.icon(), this->gray);
    this->item().setIcon(this->green);
    EXPECT_EQ(this->fixture.icon(), this->green);
    this->item().clearIcon();
    EXPECT_EQ(this->fixture.icon(), std::nullopt);
}

TYPED_TEST_P(StatusItemContract, EachPartOfAnIconCounts) {
    this->fixture.showBar();
    for (const StatusIcon& icon : {StatusIcon{"bird", SystemColor::red, "Valdorn"},
                                   StatusIcon{"bird.fill", SystemColor::red, "Valdorn"},
                                   StatusIcon{"bird.fill", SystemColor::yellow, "Valdorn"},
                                   StatusIcon{"bird.fill", SystemColor::yellow, "Valdorn, busy"}}) {
        this->item().setIcon(icon);
        EXPECT_EQ(this->fixture.icon(), icon);
    }
}

TYPED_TEST_P(StatusItemContract, AnEqualIconIsNotSentAgain) {
    this->fixture.showBar();
    this->item().clearIcon();
    EXPECT_EQ(this->fixture.changesSent(), 0);
    this->item().setIcon(this->green);
    EXPECT_EQ(this->fixture.changesSent(), 1);
    this->item().setIcon(this->green);
    EXPECT_EQ(this->fixture.changesSent(), 1);
    this->item().clearIcon();
    EXPECT_EQ(this->fixture.changesSent(), 2);
    this->item().clearIcon();
    EXPECT_EQ(this->fixture.changesSent(), 2);
}

TYPED_TEST_P(StatusItemContract, AnIconSetWhileTheSpinnerRunsStandsWhenItHasStopped) {
    this->fixture.showBar();
    this->item().setIcon(this->gray);
    this->item().startSpinner();
    EXPECT_EQ(this->fixture.icon(), std::nullopt);
    this->item().setIcon(this->green);
    EXPECT_EQ(this->fixture.icon(), std::nullopt);
    EXPECT_NE(this->fixture.spinnerLength(), std::nullopt);
    this->item().stopSpinner();
    EXPECT_EQ(this->fixture.icon(), this->green);
    EXPECT_EQ(this->fixture.spinnerLength(), std::nullopt);
}

TYPED_TEST_P(StatusItemContract, AnIconClearedWhileTheSpinnerRunsStaysAway) {
    this->fixture.showBar();
    this->item().setIcon(this->green);
    this->item().startSpinner();
    this->item().clearIcon();
    EXPECT_NE(this->fixture.spinnerLength(), std::nullopt);
    this->item().stopSpinner();
    EXPECT_EQ(this->fixture.icon(), std::nullopt);
    EXPECT_EQ(this->fixture.spinnerLength(), std::nullopt);
}

TYPED_TEST_P(StatusItemContract, StartingAndStoppingTheSpinnerTwiceIsStartingAndStoppingItOnce) {
    this->fixture.showBar();
    this->item().stopSpinner();
    EXPECT_FALSE(this->item().isSpinning());
    EXPECT_EQ(this->fixture.changesSent(), 0);
    this->item().startSpinner();
    EXPECT_EQ(this->fixture.changesSent(), 1);
    this->item().startSpinner();
    EXPECT_TRUE(this->item().isSpinning());
    EXPECT_EQ(this->fixture.changesSent(), 1);
    this->item().stopSpinner();
    EXPECT_EQ(this->fixture.changesSent(), 2);
    this->item().stopSpinner();
    EXPECT_FALSE(this->item().isSpinning());
    EXPECT_EQ(this->fixture.changesSent(), 2);
}

TYPED_TEST_P(StatusItemContract, TheLengthIsThatOfTheIconUntilItIsSet) {
    this->fixture.showBar();
    this->item().startSpinner();
    EXPECT_EQ(this->fixture.spinnerLength(), StatusItem::variableLength);
    this->item().setLength(24);
    EXPECT_EQ(this->fixture.spinnerLength(), 24);
    this->item().setLength(StatusItem::variableLength);
    EXPECT_EQ(this->fixture.spinnerLength(), StatusItem::variableLength);
}

TYPED_TEST_P(StatusItemContract, ShowsTheMenuAndKeepsItUpToDate) {
    using Titles = std::vector<std::string>;
    this->item().setMenu(this->menu);
    this->fixture.showBar();
    EXPECT_EQ(this->fixture.menuTitles(), (Titles{"Status: —", "Quit Valdorn"}));
    this->menu.setTitle("status", "Status: Idle");
    EXPECT_EQ(this->fixture.menuTitles(), (Titles{"Status: Idle", "Quit Valdorn"}));
    this->fixture.choose(1);
    EXPECT_EQ(this->chosen, "quit");
}

REGISTER_TYPED_TEST_SUITE_P(StatusItemContract, WhatWasSetLastBeforeTheBarCameIsWhatItShows,
                            ASpinnerStartedBeforeTheBarCameIsWhatItShows,
                            ShowsTheIconUntilItIsCleared, EachPartOfAnIconCounts,
                            AnEqualIconIsNotSentAgain,
                            AnIconSetWhileTheSpinnerRunsStandsWhenItHasStopped,
                            AnIconClearedWhileTheSpinnerRunsStaysAway,
                            StartingAndStoppingTheSpinnerTwiceIsStartingAndStoppingItOnce,
                            TheLengthIsThatOfTheIconUntilItIsSet, ShowsTheMenuAndKeepsItUpToDate);

}  // namespace valdorn
