#include <QApplication>
#include <QFocusFrame>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <memory>

#include <gtest/gtest.h>

#include "ui/EventLoop.h"
#include "ui/FocusRing.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

class FocusRingTest : public testing::Test {
protected:
    FocusRingTest() {
        new FocusRing(window);
        layout->setSpacing(20);
        layout->addWidget(first);
        layout->addWidget(second);
        window.show();
        window.activateWindow();
        runUntil([this] { return window.isActiveWindow(); });
    }

    // How much the most visible pixel just outside of the control's left edge stands out.
    double ringContrast(const QWidget& control) {
        const QImage seen = Pictures::render(window);
        const QColor ground = window.palette().color(QPalette::Window);
        const QPoint edge = control.mapTo(&window, control.rect().center());
        double most = 0;
        for (int x = 1; x <= 2; ++x)
            most = std::max(
                most, SystemPalette::contrast(
                          seen.pixelColor(edge.x() - control.width() / 2 - x, edge.y()), ground));
        return most;
    }

    Looks looks{Scheme::light};
    QWidget window;
    QVBoxLayout* const layout = new QVBoxLayout(&window);
    QPushButton* const first = new QPushButton(QStringLiteral("First"));
    QPushButton* const second = new QPushButton(QStringLiteral("Second"));
};

TEST_F(FocusRingTest, StandsAroundTheControlWithTheKeyboardWhereContrastIsHigh) {
    for (const Scheme scheme : {Scheme::blackOnWhite, Scheme::whiteOnBlack}) {
        looks.change(scheme);
        first->setFocus();
        EXPECT_GE(ringContrast(*first), 7.0);
        EXPECT_LT(ringContrast(*second), 1.5);
        second->setFocus();
        EXPECT_LT(ringContrast(*first), 1.5);
        EXPECT_GE(ringContrast(*second), 7.0);
    }
}

TEST_F(FocusRingTest, ElsewhereTheStyleTellsIt) {
    first->setFocus();
    EXPECT_LT(ringContrast(*first), 1.5);
    EXPECT_EQ(window.findChild<QFocusFrame*>(), nullptr);
}

TEST_F(FocusRingTest, ComesAndGoesWithTheDesktopsColours) {
    first->setFocus();
    looks.change(Scheme::whiteOnBlack);
    EXPECT_GE(ringContrast(*first), 7.0);
    looks.change(Scheme::dark);
    EXPECT_LT(ringContrast(*first), 1.5);
}

TEST_F(FocusRingTest, LeavesControlsOfOtherWindowsAlone) {
    looks.change(Scheme::blackOnWhite);
    QWidget other;
    QPushButton button(QStringLiteral("Other"), &other);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(runUntil([&] { return other.isActiveWindow(); }));
    button.setFocus();
    EXPECT_EQ(window.findChild<QFocusFrame*>(), nullptr);
    EXPECT_EQ(other.findChild<QFocusFrame*>(), nullptr);
}

TEST_F(FocusRingTest, OutlivesTheControlAndWhatItStandsIn) {
    looks.change(Scheme::blackOnWhite);
    auto* const part = new QWidget;
    layout->addWidget(part);
    auto* const button = new QPushButton(QStringLiteral("Third"), part);
    button->setFocus();
    delete part;
    first->setFocus();
    EXPECT_GE(ringContrast(*first), 7.0);
}

}  // namespace
}  // namespace valdorn
