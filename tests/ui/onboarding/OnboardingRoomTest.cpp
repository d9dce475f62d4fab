#include <QLabel>
#include <QPushButton>
#include <cstdlib>
#include <iterator>

#include <gtest/gtest.h>

#include "ui/Divider.h"
#include "ui/Pictures.h"
#include "ui/StatusDot.h"
#include "ui/SystemPalette.h"
#include "ui/onboarding/OnboardingStage.h"
#include "ui/onboarding/OnboardingView.h"

namespace valdorn {
namespace {

constexpr RunnerStatus statuses[] = {RunnerStatus::stopped, RunnerStatus::starting,
                                     RunnerStatus::noNetwork, RunnerStatus::connected};

class OnboardingRoomTest : public testing::Test {
protected:
    QRect place(const char* name) const {
        const auto* const widget = stage.part<QWidget>(name);
        return {widget->mapTo(stage.view, QPoint()), widget->size()};
    }

    // Each text has the room it takes, inside the padding and above what follows.
    void expectNothingClipped() {
        for (const auto* const label : stage.view->findChildren<QLabel*>()) {
            const int needed = label->wordWrap() ? label->heightForWidth(label->width())
                                                 : label->sizeHint().height();
            EXPECT_GE(label->height(), needed) << label->objectName().toStdString();
            if (!label->wordWrap()) {
                EXPECT_GE(label->width(), label->sizeHint().width());
            }
        }
        for (const auto* const button : stage.view->findChildren<QPushButton*>())
            EXPECT_GE(button->width(), button->sizeHint().width());
        const QRect inner = stage.view->rect().adjusted(20, 20, -20, -20);
        const char* const parts[] = {"title", "explanation", "status", "note", "continue"};
        for (std::size_t index = 0; index < std::size(parts); ++index) {
            EXPECT_TRUE(inner.contains(place(parts[index]))) << parts[index];
            if (index > 0) {
                EXPECT_GE(place(parts[index]).top(), place(parts[index - 1]).bottom() + 14);
            }
        }
    }

    Looks looks{Scheme::light, 9};
    OnboardingStage stage;
};

TEST_F(OnboardingRoomTest, Is460By300AtTheUsualFont) {
    stage.show();
    for (const RunnerStatus status : statuses) {
        stage.become(status);
        EXPECT_EQ(stage.view->size(), QSize(460, 300));
        expectNothingClipped();
    }
}

TEST_F(OnboardingRoomTest, GrowsWithTheFontRatherThanClip) {
    stage.show();
    for (const RunnerStatus status : statuses) {
        stage.become(status);
        for (const double points : {10.0, 13.5, 15.0, 20.0}) {
            SCOPED_TRACE(points);
            looks.change(Scheme::light, points);
            stage.settle();
            expectNothingClipped();
        }
    }
}

TEST_F(OnboardingRoomTest, LongestTitlesFitAtTheUsualFont) {
    stage.show();
    stage.become(RunnerStatus::notRegistered);
    ASSERT_EQ(stage.title("runnerSettings"), "Register a Runner…");
    EXPECT_EQ(stage.view->size(), QSize(460, 300));
    expectNothingClipped();
}

// However long its title is.
TEST_F(OnboardingRoomTest, EachButtonHasTheSameAirAroundItsTitle) {
    stage.show();
    for (const double points : {9.0, 15.0}) {
        looks.change(Scheme::light, points);
        stage.settle();
        for (const char* const name : {"openNetworkSettings", "runnerSettings", "continue"}) {
            const auto* const button = stage.button(name);
            const int title = button->fontMetrics().horizontalAdvance(button->text());
            EXPECT_NEAR(button->width() - title, button->fontMetrics().height(), 1) << name;
        }
    }
}

TEST_F(OnboardingRoomTest, IsAsLargeAsItMustBeFromTheFirstMomentOn) {
    looks.change(Scheme::light, 20);
    stage.show();
    expectNothingClipped();
    EXPECT_GT(stage.view->height(), 300);
    EXPECT_GT(stage.view->width(), 460);
}

TEST_F(OnboardingRoomTest, FollowsAFontThatChangesWhileItIsOpen) {
    stage.show();
    stage.become(RunnerStatus::noNetwork);
    looks.change(Scheme::light, 15);
    stage.settle();
    expectNothingClipped();
    EXPECT_GT(stage.view->height(), 300);
    looks.change(Scheme::light, 9);
    stage.settle();
    EXPECT_EQ(stage.view->size(), QSize(460, 300));
    expectNothingClipped();
}

TEST_F(OnboardingRoomTest, PartsStandBelowEachOtherEvenly) {
    stage.show();
    EXPECT_EQ(place("title").topLeft(), QPoint(20, 20));
    EXPECT_EQ(place("explanation").top(), place("title").bottom() + 1 + 14);
    EXPECT_EQ(place("explanation").width(), 420);
    const auto* const divider = stage.view->findChild<Divider*>();
    EXPECT_EQ(divider->geometry(), QRect(20, place("explanation").bottom() + 1 + 14, 420, 1));
    EXPECT_EQ(place("status").top(), divider->y() + 1 + 14);
    EXPECT_EQ(place("statusDot").left(), 20);
    EXPECT_EQ(place("status").left(), 38);
    EXPECT_LE(std::abs(place("statusDot").center().y() - place("status").center().y()), 1);
    EXPECT_EQ(place("note").top(), place("status").bottom() + 1 + 14);
    EXPECT_EQ(place("openNetworkSettings").bottomLeft(), QPoint(20, 279));
    EXPECT_EQ(place("runnerSettings").left(), place("openNetworkSettings").right() + 1 + 8);
    EXPECT_EQ(place("continue").left(), place("runnerSettings").right() + 1 + 8);
}

TEST_F(OnboardingRoomTest, FontsAreThoseOfTheDesktopInTheirStyles) {
    stage.show();
    looks.change(Scheme::light, 26);
    const auto pointsOf = [this](const char* label) {
        return stage.part<QLabel>(label)->font().pointSizeF();
    };
    EXPECT_NEAR(pointsOf("title"), 34, 0.01);
    EXPECT_EQ(stage.part<QLabel>("title")->font().weight(), QFont::Bold);
    EXPECT_NEAR(pointsOf("explanation"), 26, 0.01);
    EXPECT_NEAR(pointsOf("status"), 24, 0.01);
    EXPECT_NEAR(pointsOf("note"), 24, 0.01);
}

TEST_F(OnboardingRoomTest, TextsStandOutInEachLight) {
    stage.show();
    for (const Scheme scheme : {Scheme::dark, Scheme::light}) {
        looks.change(scheme, 9);
        const QColor ground = stage.window->palette().color(QPalette::Window);
        const auto colorOf = [this](const char* label) {
            return stage.part<QLabel>(label)->palette().color(QPalette::WindowText);
        };
        for (const char* const quiet : {"explanation", "note"}) {
            EXPECT_GE(SystemPalette::contrast(colorOf(quiet), ground), 4.5);
            EXPECT_LT(SystemPalette::contrast(colorOf(quiet), ground),
                      SystemPalette::contrast(colorOf("title"), ground));
        }
        EXPECT_EQ(colorOf("status"), colorOf("title"));
    }
}

}  // namespace
}  // namespace valdorn
