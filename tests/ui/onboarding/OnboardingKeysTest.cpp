#include <QApplication>
#include <QTest>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/onboarding/OnboardingStage.h"
#include "ui/onboarding/OnboardingView.h"

namespace valdorn {
namespace {

class OnboardingKeysTest : public testing::Test {
protected:
    OnboardingKeysTest() { stage.show(); }

    std::string focused() const {
        const QWidget* const widget = QApplication::focusWidget();
        return widget ? widget->objectName().toStdString() : "none";
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }

    const Looks looks{Scheme::light, 9};
    OnboardingStage stage;
    const std::vector<std::string> buttons{"openNetworkSettings", "runnerSettings", "continue"};
};

TEST_F(OnboardingKeysTest, KeyboardIsAtContinueEachTimeTheWindowOpens) {
    EXPECT_EQ(focused(), "continue");
    stage.button("runnerSettings")->setFocus();
    stage.close();
    stage.show();
    EXPECT_EQ(focused(), "continue");
}

TEST_F(OnboardingKeysTest, TabFollowsTheEye) {
    for (const std::string& name : buttons) {
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), name);
    }
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), "runnerSettings");
}

TEST_F(OnboardingKeysTest, ReturnAndEnterContinueWhereverTheKeyboardIs) {
    int presses = 0;
    for (const std::string& name : buttons) {
        stage.button(name.c_str())->setFocus();
        press(Qt::Key_Return);
        EXPECT_EQ(stage.closings, ++presses) << name;
        press(Qt::Key_Enter, Qt::KeypadModifier);
        EXPECT_EQ(stage.closings, ++presses) << name;
    }
    stage.button("continue")->clearFocus();
    QTest::keyClick(stage.view, Qt::Key_Return);
    EXPECT_EQ(stage.closings, ++presses);
    EXPECT_EQ(stage.registrations, 0);
    EXPECT_TRUE(stage.workspace.urlsOpened.empty());
}

TEST_F(OnboardingKeysTest, ReturnHeldDownIsOnePress) {
    QTest::simulateEvent(stage.button("continue"), true, Qt::Key_Return, {}, QString(), true);
    EXPECT_EQ(stage.closings, 0);
}

TEST_F(OnboardingKeysTest, SpacePressesTheButtonThatHasTheKeyboard) {
    press(Qt::Key_Space);
    EXPECT_EQ(stage.closings, 1);
    stage.button("runnerSettings")->setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(stage.registrations, 1);
    stage.button("openNetworkSettings")->setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(stage.workspace.urlsOpened.size(), 1U);
    EXPECT_EQ(stage.closings, 1);
}

TEST_F(OnboardingKeysTest, EscapeDoesNothing) {
    press(Qt::Key_Escape);
    EXPECT_TRUE(stage.window->isVisible());
    EXPECT_EQ(stage.closings, 0);
}

TEST_F(OnboardingKeysTest, OnlyContinueLooksLikeTheDefault) {
    EXPECT_TRUE(stage.button("continue")->isDefault());
    EXPECT_FALSE(stage.button("runnerSettings")->isDefault());
    EXPECT_FALSE(stage.button("openNetworkSettings")->isDefault());
}

}  // namespace
}  // namespace valdorn
