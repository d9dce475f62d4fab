#pragma once

#include <gtest/gtest.h>

#include "platform/WindowHost.h"

namespace valdorn {

// What every WindowHost does. The fixture has:
//   WindowHost& host();            // able to make a window of every kind
//   int windowsMade();
//   bool isShown(WindowKind);
//   bool hasKeyboard(WindowKind);  // is in front, once the desktop has had time to bring it there
//   WindowDescription look(WindowKind);  // of a window that was made, as it stands
//   void closeAsUser(WindowKind);  // by the window's own button
template <typename Fixture>
class WindowHostContract : public testing::Test {
protected:
    WindowHost& host() { return fixture.host(); }

    void expectLook(const WindowDescription& expected) {
        const WindowDescription look = fixture.look(expected.kind);
        EXPECT_EQ(look.title, expected.title);
        EXPECT_EQ(look.contentWidthPoints, expected.contentWidthPoints);
        EXPECT_EQ(look.contentHeightPoints, expected.contentHeightPoints);
        EXPECT_EQ(look.resizable, expected.resizable);
    }

    Fixture fixture;
    const WindowDescription settings{WindowKind::settings, "Valdorn", 480, 340, false};
    const WindowDescription log{WindowKind::log, "Valdorn — Log", 720, 460, true};
};

TYPED_TEST_SUITE_P(WindowHostContract);

TYPED_TEST_P(WindowHostContract, MakesNoWindowBeforeOneIsShown) {
    EXPECT_EQ(this->fixture.windowsMade(), 0);
    EXPECT_FALSE(this->fixture.isShown(WindowKind::log));
}

TYPED_TEST_P(WindowHostContract, ShowsAWindowAsDescribed) {
    for (const WindowDescription& description : {this->settings, this->log}) {
        this->host().show(description);
        EXPECT_TRUE(this->fixture.isShown(description.kind));
        this->expectLook(description);
    }
    EXPECT_EQ(this->fixture.windowsMade(), 2);
}

TYPED_TEST_P(WindowHostContract, AShownWindowHasTheKeyboardEachTime) {
    this->host().show(this->log);
    EXPECT_TRUE(this->fixture.hasKeyboard(WindowKind::log));
    this->host().show(this->settings);
    EXPECT_TRUE(this->fixture.hasKeyboard(WindowKind::settings));
    this->host().show(this->log);
    EXPECT_TRUE(this->fixture.hasKeyboard(WindowKind::log));
    EXPECT_TRUE(this->fixture.isShown(WindowKind::settings));
}

TYPED_TEST_P(WindowHostContract, ClosingHidesThatWindowOnly) {
    this->host().show(this->settings);
    this->host().show(this->log);
    this->host().close(WindowKind::log);
    this->host().close(WindowKind::log);
    EXPECT_FALSE(this->fixture.isShown(WindowKind::log));
    EXPECT_TRUE(this->fixture.isShown(WindowKind::settings));
}

TYPED_TEST_P(WindowHostContract, AClosedWindowComesBackAsTheSameWindow) {
    this->host().show(this->log);
    this->host().close(WindowKind::log);
    this->host().show(this->log);
    EXPECT_TRUE(this->fixture.isShown(WindowKind::log));
    EXPECT_TRUE(this->fixture.hasKeyboard(WindowKind::log));
    EXPECT_EQ(this->fixture.windowsMade(), 1);
    this->expectLook(this->log);
}

TYPED_TEST_P(WindowHostContract, AWindowThatTheUserClosedComesBackAsTheSameWindow) {
    this->host().show(this->log);
    this->fixture.closeAsUser(WindowKind::log);
    EXPECT_FALSE(this->fixture.isShown(WindowKind::log));
    this->host().close(WindowKind::log);
    this->host().show(this->log);
    EXPECT_TRUE(this->fixture.isShown(WindowKind::log));
    EXPECT_EQ(this->fixture.windowsMade(), 1);
}

TYPED_TEST_P(WindowHostContract, ClosingAKindThatWasNeverShownDoesNothing) {
    this->host().show(this->log);
    this->host().close(WindowKind::onboarding);
    EXPECT_EQ(this->fixture.windowsMade(), 1);
    EXPECT_TRUE(this->fixture.isShown(WindowKind::log));
}

REGISTER_TYPED_TEST_SUITE_P(WindowHostContract, MakesNoWindowBeforeOneIsShown,
                            ShowsAWindowAsDescribed, AShownWindowHasTheKeyboardEachTime,
                            ClosingHidesThatWindowOnly, AClosedWindowComesBackAsTheSameWindow,
                            AWindowThatTheUserClosedComesBackAsTheSameWindow,
                            ClosingAKindThatWasNeverShownDoesNothing);

}  // namespace valdorn
