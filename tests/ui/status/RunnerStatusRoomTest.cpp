#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/StatusDot.h"
#include "ui/SymbolButton.h"
#include "ui/status/RunnerStatusTest.h"
#include "ui/status/RunnerStatusView.h"

namespace valdorn {
namespace {

using RunnerStatusRoomTest = RunnerStatusTest;

TEST_F(RunnerStatusRoomTest, PartsStandApartEvenly) {
    show({"a", "b"});
    stage.start(0);
    QWidget* const window = stage.window.get();
    QWidget* const heading = window->findChild<QLabel*>(QStringLiteral("heading"));
    EXPECT_EQ(placeOf(heading, window).topLeft(), QPoint(16, 16));
    EXPECT_EQ(placeOf(rows()[0], window).top() - placeOf(heading, window).bottom() - 1, 12);
    EXPECT_EQ(placeOf(rows()[0], window).left(), 16);
    EXPECT_EQ(placeOf(rows()[0], window).right(), window->width() - 16 - 1);
    EXPECT_EQ(rows()[1]->y() - rows()[0]->geometry().bottom() - 1, 12);
    EXPECT_EQ(placeOf(footnote(), window).top() - placeOf(rows()[1], window).bottom() - 1, 12);
    const QRect dot = placeOf(part<StatusDot>(0, "statusDot"), rows()[0]);
    EXPECT_EQ(dot.left(), 4 + 6);
    EXPECT_EQ(placeOf(part(0, "name"), rows()[0]).left() - dot.right() - 1, 10);
    // The symbol ends where the padding begins.
    EXPECT_EQ(placeOf(button(0), rows()[0]).right() - SymbolButton::margin,
              rows()[0]->width() - 1 - 4 - 6);
}

TEST_F(RunnerStatusRoomTest, HasALeastSizeThatGrowsWithTheFont) {
    Looks large(Scheme::light);
    show({"a"});
    EXPECT_EQ(stage.view->minimumSizeHint(), QSize(460, 200));
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.print(0, "no route to host\n");
    large.change(Scheme::light, 30);
    paintAll();
    EXPECT_GT(stage.view->minimumSizeHint().width(), 460);
}

TEST_F(RunnerStatusRoomTest, FootnoteWrapsAndMakesTheWindowNoWider) {
    Looks large(Scheme::light, 30);
    stage.emptyFleet();
    stage.show();
    EXPECT_EQ(stage.view->minimumSizeHint().width(), 460);
    EXPECT_GT(footnote()->height(), 2 * footnote()->fontMetrics().height() - 1);
}

TEST_F(RunnerStatusRoomTest, LongTextsAreElidedInTheMiddleAndNeverClipped) {
    const std::string name = "begin" + std::string(200, 'x') + "end";
    show({name});
    stage.window->resize(460, 260);
    stage.print(stage.start(0), StatusStage::declared(std::string(300, '1')));
    stage.print(0, StatusStage::building(std::string(300, 'y'), "w/j"));
    stage.settle();
    for (const char* const line : {"name", "version", "build"}) {
        const QString shown = part(0, line)->shownText();
        EXPECT_TRUE(shown.contains(QChar(0x2026))) << line;
        EXPECT_LE(placeOf(part(0, line), rows()[0]).right(), rows()[0]->width() - 10) << line;
    }
    EXPECT_TRUE(part(0, "name")->shownText().startsWith(QStringLiteral("begin")));
    EXPECT_TRUE(part(0, "name")->shownText().endsWith(QStringLiteral("end")));
    EXPECT_EQ(part(0, "name")->text().toStdString(), name);
    EXPECT_EQ(uptime(0), "· up 0:00");
    EXPECT_EQ(part(0, "status")->shownText(), QStringLiteral("Building a job"));
    EXPECT_LE(placeOf(rows()[0], stage.window.get()).right(), 460 - 16);
    EXPECT_LE(placeOf(button(0), stage.window.get()).right(), 460 - 16 - 4);
    EXPECT_LT(part(0, "name")->geometry().right(), button(0)->x());
}

TEST_F(RunnerStatusRoomTest, ScrollsWhereTheRowsDoNotFitAndFollowsTheKeyboard) {
    show({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"});
    auto* const area = stage.window->findChild<QScrollArea*>();
    EXPECT_TRUE(area->verticalScrollBar()->isVisible());
    EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
    EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
    button(0)->setFocus();
    for (int step = 1; step < 12; ++step)
        QTest::keyClick(stage.window->focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(button(11)->hasFocus());
    EXPECT_TRUE(area->viewport()->rect().contains(placeOf(button(11), area->viewport())));
    stage.window->resize(480, 1200);
    paintAll();
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
}

}  // namespace
}  // namespace valdorn
