#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/SymbolButton.h"
#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

class SymbolButtonTest : public testing::Test {
protected:
    SymbolButtonTest() {
        auto* const layout = new QVBoxLayout(&window);
        for (SymbolButton* const button : {first, second}) {
            button->setSymbol(QStringLiteral("play.circle.fill"), SystemColor::green,
                              QStringLiteral("Start runner"));
            layout->addWidget(button);
        }
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        first->setFocus();
    }

    QImage picture() { return Pictures::render(*first); }
    QColor at(int x, int y) { return picture().pixelColor(x, y); }
    static QColor middleOf(const QImage& image) { return image.pixelColor(image.rect().center()); }

    const Looks looks{Scheme::light};
    QWidget window;
    SymbolButton* const first = new SymbolButton(22);
    SymbolButton* const second = new SymbolButton(22);
    QSignalSpy clicks{first, &QAbstractButton::clicked};
};

TEST_F(SymbolButtonTest, SaysWhatItDoes) {
    EXPECT_EQ(first->toolTip(), QStringLiteral("Start runner"));
    EXPECT_EQ(first->accessibleName(), QStringLiteral("Start runner"));
    first->setSymbol(QStringLiteral("minus"), std::nullopt, QStringLiteral("Remove <b>"));
    EXPECT_EQ(first->accessibleName(), QStringLiteral("Remove <b>"));
    EXPECT_TRUE(first->toolTip().contains(QStringLiteral("&lt;b&gt;")));
    const auto* const accessible = QAccessible::queryAccessibleInterface(first);
    EXPECT_EQ(accessible->role(), QAccessible::Button);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Remove <b>"));
}

TEST_F(SymbolButtonTest, IsAsLargeAsItsSymbolAndTheRing) {
    EXPECT_EQ(first->size(), QSize(28, 28));
}

// Some desktops have black for it, on black.
TEST_F(SymbolButtonTest, DisabledSymbolCanBeSeenWhereContrastIsHigh) {
    const Looks strong(Scheme::whiteOnBlack);
    QPalette careless = QApplication::palette();
    careless.setColor(QPalette::Disabled, QPalette::WindowText, Qt::black);
    QApplication::setPalette(careless);
    QCoreApplication::sendPostedEvents();
    first->setSymbol(QStringLiteral("minus"), std::nullopt, {});
    first->setEnabled(false);
    EXPECT_GE(SystemPalette::contrast(middleOf(picture()), Qt::black), 4.5);
}

TEST_F(SymbolButtonTest, SymbolHasItsColourOnLightAndDark) {
    EXPECT_EQ(at(7, 14), SystemPalette::dot(SystemColor::green, first->palette()));
    first->setSymbol(QStringLiteral("stop.circle.fill"), SystemColor::red, {});
    EXPECT_EQ(at(7, 14), SystemPalette::dot(SystemColor::red, first->palette()));
    const Looks dark(Scheme::dark);
    EXPECT_EQ(at(7, 14), QColor(0xFF, 0x45, 0x3A));
    first->setSymbol(QStringLiteral("stop.circle.fill"), std::nullopt, {});
    EXPECT_EQ(at(7, 14), first->palette().color(QPalette::WindowText));
    first->setSymbol(QStringLiteral("stop.circle.fill"), SystemColor::red, {});
    first->setEnabled(false);
    EXPECT_EQ(at(7, 14), first->palette().color(QPalette::Disabled, QPalette::WindowText));
}

TEST_F(SymbolButtonTest, SymbolIsDrawnForTheScreensScale) {
    const QImage coarse = Pictures::render(*first).scaled(56, 56);
    EXPECT_FALSE(Pictures::areAlike(Pictures::render(*first, 2), coarse));
}

TEST_F(SymbolButtonTest, SpaceReturnAndEnterPressIt) {
    QTest::keyClick(first, Qt::Key_Space);
    EXPECT_EQ(clicks.count(), 1);
    QTest::keyClick(first, Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 2);
    QTest::keyClick(first, Qt::Key_Enter);
    EXPECT_EQ(clicks.count(), 3);
    QTest::keyClick(first, Qt::Key_A);
    EXPECT_EQ(clicks.count(), 3);
}

TEST_F(SymbolButtonTest, KeyHeldDownIsOnePress) {
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(first, &repeated);
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(SymbolButtonTest, RingShowsWhereTheKeyboardIs) {
    const QImage plain = picture();
    QTest::keyClick(first, Qt::Key_Backtab);
    QTest::keyClick(second, Qt::Key_Tab);
    ASSERT_TRUE(first->hasFocus());
    EXPECT_FALSE(Pictures::areAlike(picture(), plain));
    EXPECT_EQ(at(14, 0).hue(), first->palette().color(QPalette::Highlight).hue());
    QTest::keyClick(first, Qt::Key_Tab);
    EXPECT_TRUE(Pictures::areAlike(picture(), plain));
}

TEST_F(SymbolButtonTest, PointerAloneDrawsNoRing) {
    const QImage plain = picture();
    second->setFocus();
    QTest::mouseClick(first, Qt::LeftButton);
    EXPECT_TRUE(first->hasFocus());
    EXPECT_TRUE(Pictures::areAlike(picture(), plain));
}

TEST_F(SymbolButtonTest, AnswersThePointerAndThePress) {
    const QColor plain = at(3, 6);
    first->setAttribute(Qt::WA_UnderMouse);
    const QColor hovered = at(3, 6);
    first->setDown(true);
    const QColor pressed = at(3, 6);
    EXPECT_LT(hovered.lightness(), plain.lightness());
    EXPECT_LT(pressed.lightness(), hovered.lightness());
    first->setDown(false);
    first->setEnabled(false);
    EXPECT_EQ(at(3, 6), plain);
}

}  // namespace
}  // namespace valdorn
