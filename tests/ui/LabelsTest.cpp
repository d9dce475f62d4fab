#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/ElidedLabel.h"
#include "ui/EventCounter.h"
#include "ui/GroupPanel.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"
#include "ui/TabularLabel.h"

namespace valdorn {
namespace {

class LabelsTest : public testing::Test {
protected:
    template <typename Widget>
    Widget* put(Widget* widget) {
        layout->addWidget(widget);
        return widget;
    }
    void show(int width) {
        window.resize(width, 100);
        window.show();
        QCoreApplication::sendPostedEvents();
    }
    // What the pointer over the label brings up.
    static QString toolTipOf(QWidget& widget) {
        QHelpEvent event(QEvent::ToolTip, {1, 1}, widget.mapToGlobal(QPoint(1, 1)));
        QCoreApplication::sendEvent(&widget, &event);
        return QToolTip::text();
    }
    static QColor colorOf(const QWidget& widget) {
        return widget.palette().color(QPalette::WindowText);
    }

    Looks looks{Scheme::light};
    QWidget window;
    QVBoxLayout* const layout = new QVBoxLayout(&window);
};

TEST_F(LabelsTest, TextThatFitsIsShownWhole) {
    auto* const label = put(new ElidedLabel(TextStyle::body));
    for (const char* const text : {"mac-mini", "i", "WWW", "a text of some words"}) {
        label->setText(QLatin1String(text));
        show(400);
        EXPECT_EQ(label->width(), label->sizeHint().width());
        EXPECT_EQ(label->shownText(), QLatin1String(text));
    }
    EXPECT_NE(toolTipOf(*label), label->text());
}

TEST_F(LabelsTest, TextThatDoesNotFitLosesItsMiddleAndIsTheTooltip) {
    const QString text =
        QStringLiteral("begin <b>") + QString(80, QLatin1Char('x')) + QStringLiteral("</b>\nend");
    auto* const label = put(new ElidedLabel(TextStyle::body));
    label->setText(text);
    show(200);
    EXPECT_EQ(label->width(), 200 - 2 * layout->contentsMargins().left());
    EXPECT_TRUE(label->shownText().startsWith(QStringLiteral("begin")));
    EXPECT_TRUE(label->shownText().endsWith(QStringLiteral(" end")));
    EXPECT_TRUE(label->shownText().contains(QChar(0x2026)));
    EXPECT_TRUE(toolTipOf(*label).contains(QStringLiteral("&lt;b&gt;")));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), text);
}

TEST_F(LabelsTest, LongTextAsksForNoRoom) {
    auto* const label = put(new ElidedLabel(TextStyle::body));
    label->setText(QString(500, QLatin1Char('x')));
    EXPECT_LT(label->minimumSizeHint().width(), 60);
}

TEST_F(LabelsTest, OfAnEndlessTextOnlyTheEndsAreLookedAt) {
    auto* const label = put(new ElidedLabel(TextStyle::body));
    label->setText(QStringLiteral("begin") + QString(900'000, QLatin1Char('x')) +
                   QStringLiteral("end"));
    show(300);
    EXPECT_TRUE(label->shownText().startsWith(QStringLiteral("begin")));
    EXPECT_TRUE(label->shownText().endsWith(QStringLiteral("end")));
    EXPECT_LE(label->text().size(), 2001);
    EXPECT_LE(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name).size(), 2001);
}

TEST_F(LabelsTest, TooltipGoesWhenTheTextFits) {
    auto* const label = put(new ElidedLabel(TextStyle::body));
    label->setText(QString(60, QLatin1Char('x')));
    show(200);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));  // which ends any tooltip
    EXPECT_EQ(toolTipOf(*label), label->text());
    show(2000);
    QTest::qWait(0);
    ASSERT_TRUE(QToolTip::isVisible());
    toolTipOf(*label);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

TEST_F(LabelsTest, TooltipOfALongTextIsNoWiderThanAScreen) {
    auto* const label = put(new ElidedLabel(TextStyle::body));
    label->setText(QString(3000, QLatin1Char('W')));
    show(200);
    toolTipOf(*label);
    for (const QWidget* const widget : QApplication::topLevelWidgets())
        if (widget->inherits("QTipLabel")) {
            EXPECT_LT(widget->width(), 800);
        }
}

TEST_F(LabelsTest, ColourStandsOutFromWhatTheLabelStandsOn) {
    auto* const onWindow = put(new StyledLabel(TextStyle::caption, SystemColor::secondary));
    auto* const panel = put(new GroupPanel);
    auto* const inPanel = new StyledLabel(TextStyle::caption, SystemColor::orange);
    (new QVBoxLayout(panel))->addWidget(inPanel);
    show(300);
    for (const Scheme scheme : {Scheme::dark, Scheme::light}) {
        looks.change(scheme);
        EXPECT_EQ(colorOf(*onWindow),
                  SystemPalette::text(SystemColor::secondary, window.palette()));
        EXPECT_EQ(colorOf(*inPanel), SystemPalette::text(SystemColor::orange, panel->palette()));
    }
}

TEST_F(LabelsTest, ColouredLabelThatIsDisabledLooksSo) {
    StyledLabel label(TextStyle::body, SystemColor::red);
    const QColor enabled = label.palette().color(QPalette::WindowText);
    label.setEnabled(false);
    EXPECT_NE(label.palette().color(QPalette::WindowText), enabled);
}

TEST_F(LabelsTest, ColourComesAndGoes) {
    auto* const label = put(new StyledLabel(TextStyle::body));
    show(300);
    EXPECT_EQ(colorOf(*label), colorOf(window));
    label->setColor(SystemColor::red);
    EXPECT_EQ(colorOf(*label), SystemPalette::text(SystemColor::red, window.palette()));
    label->setColor(std::nullopt);
    EXPECT_EQ(colorOf(*label), colorOf(window));
    looks.change(Scheme::dark);
    EXPECT_EQ(colorOf(*label), colorOf(window));
}

TEST_F(LabelsTest, StyleFollowsTheDesktopsFontFromParentToParent) {
    auto* const label = put(new StyledLabel(TextStyle::title3, std::nullopt, QFont::Bold));
    show(300);
    looks.change(Scheme::light, 26);
    EXPECT_NEAR(label->font().pointSizeF(), 30, 0.01);
    EXPECT_EQ(label->font().weight(), QFont::Bold);
    QWidget other;
    label->setParent(&other);
    other.ensurePolished();
    looks.change(Scheme::light, 13);
    EXPECT_NEAR(label->font().pointSizeF(), 15, 0.01);
}

TEST_F(LabelsTest, FontOfAFormerParentIsOfNoConcern) {
    QWidget second;
    QWidget third;
    auto* const label = put(new StyledLabel(TextStyle::body));
    label->setParent(&second);
    label->setParent(&third);
    QFont own = label->font();
    own.setPointSize(40);
    label->setFont(own);
    for (QWidget* const former : {&window, &second}) {
        QEvent change(QEvent::FontChange);
        QCoreApplication::sendEvent(former, &change);
        EXPECT_EQ(label->font().pointSize(), 40);
    }
}

TEST_F(LabelsTest, PanelIsAShadeOffItsWindow) {
    auto* const panel = put(new GroupPanel);
    show(300);
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        looks.change(scheme);
        const QColor around = window.palette().color(QPalette::Window);
        const QColor shade = Pictures::render(*panel).pixelColor(panel->rect().center());
        EXPECT_NE(shade, around);
        EXPECT_LT(SystemPalette::contrast(shade, around), 1.3);
    }
}

TEST_F(LabelsTest, CounterKeepsItsRoomWhateverItsDigits) {
    auto* const counter = put(new TabularLabel(TextStyle::callout, SystemColor::secondary));
    counter->setText(QStringLiteral("· up 1:11"));
    const QSize ones = counter->sizeHint();
    counter->setText(QStringLiteral("· up 8:88"));
    EXPECT_EQ(counter->sizeHint(), ones);
    counter->setText(QStringLiteral("· up 18:88"));
    EXPECT_GT(counter->sizeHint().width(), ones.width());
    EXPECT_EQ(counter->accessibleName(), QStringLiteral("· up 18:88"));
    const int before = counter->sizeHint().width();
    show(300);
    looks.change(Scheme::light, 20);
    EXPECT_GT(counter->sizeHint().width(), before);
}

TEST_F(LabelsTest, CounterAsksForRoomOnlyWhenItNeedsMore) {
    auto* const counter = put(new TabularLabel(TextStyle::callout, SystemColor::secondary));
    counter->setText(QStringLiteral("· up 9:58"));
    show(300);
    const int width = counter->width();
    EventCounter layouts(QEvent::LayoutRequest);
    window.installEventFilter(&layouts);
    counter->setText(QStringLiteral("· up 9:59"));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(layouts.counts[&window], 0);
    counter->setText(QStringLiteral("· up 10:00"));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(layouts.counts[&window], 1);
    EXPECT_GT(counter->width(), width);
}

TEST_F(LabelsTest, CounterShowsItsTextInItsColour) {
    auto* const counter = put(new TabularLabel(TextStyle::body, SystemColor::secondary));
    counter->setText(QStringLiteral("· up 1:23"));
    auto* const plain = put(new ElidedLabel(TextStyle::body, SystemColor::secondary));
    plain->setText(QStringLiteral("· up 1:23"));
    show(300);
    plain->resize(counter->size());
    EXPECT_TRUE(Pictures::areAlike(Pictures::render(*counter), Pictures::render(*plain)));
}

}  // namespace
}  // namespace valdorn
