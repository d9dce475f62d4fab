#include <gtest/gtest.h>

#include "ui/EventCounter.h"
#include "ui/Pictures.h"
#include "ui/SystemPalette.h"
#include "ui/TabularLabel.h"
#include "ui/status/RunnerStatusTest.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

using RunnerStatusPaintingTest = RunnerStatusTest;

// What is drawn again.

TEST_F(RunnerStatusPaintingTest, OnlyTheRowThatChangesIsPainted) {
    show({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"});
    stage.window->resize(480, 1200);
    paintAll();
    EventCounter paints(QEvent::Paint);
    for (RunnerRow* const row : rows())
        row->installEventFilter(&paints);
    stage.start(3);
    paintAll();
    EXPECT_GT(paints.counts[rows()[3]], 0);
    EXPECT_EQ(paints.counts.size(), 1U);
}

TEST_F(RunnerStatusPaintingTest, TickPaintsTheCounterAloneAndMovesNothing) {
    show({"a"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    paintAll();
    EventCounter paints(QEvent::Paint);
    for (QWidget* const widget : rows()[0]->findChildren<QWidget*>())
        widget->installEventFilter(&paints);
    const QRect before = part<TabularLabel>(0, "uptime")->geometry();
    stage.pass(1s);
    paintAll();
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->geometry(), before);
    EXPECT_EQ(paints.counts.size(), 1U);
    EXPECT_EQ(paints.counts[part<TabularLabel>(0, "uptime")], 1);
}

TEST_F(RunnerStatusPaintingTest, ChangeThatIsNotShownPaintsNothing) {
    show({"a"});
    stage.start(0);
    paintAll();
    EventCounter paints(QEvent::Paint);
    for (QWidget* const widget : rows()[0]->findChildren<QWidget*>())
        widget->installEventFilter(&paints);
    bool isAnnounced = false;
    const Subscription changes = stage.runner(0).onWillChange([&] { isAnnounced = true; });
    RunnerConfig record = stage.runner(0).config();
    record.labels = "linux";
    stage.runner(0).setConfig(record);
    EXPECT_TRUE(isAnnounced);
    paintAll();
    EXPECT_EQ(paints.counts.size(), 0U);
}

// Light and dark.

TEST_F(RunnerStatusPaintingTest, TextsStandOutOnTheirPanelsInEachLight) {
    Looks changing(Scheme::light);
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.releaseIs("v2");
    for (const Scheme scheme : {Scheme::light, Scheme::dark, Scheme::light}) {
        changing.change(scheme);
        const QPalette window = stage.window->palette();
        const QColor panel = Pictures::render(*rows()[0]).pixelColor(30, 4);
        EXPECT_EQ(panel, rows()[0]->palette().color(QPalette::Window));
        EXPECT_NE(panel, window.color(QPalette::Window));
        for (const char* const line : {"name", "status", "version", "updateHint"})
            EXPECT_GE(SystemPalette::contrast(part(0, line)->palette().color(QPalette::WindowText),
                                              panel),
                      4.5)
                << line;
        EXPECT_GE(SystemPalette::contrast(footnote()->palette().color(QPalette::WindowText),
                                          window.color(QPalette::Window)),
                  4.5);
        EXPECT_EQ(part(0, "name")->palette().color(QPalette::WindowText),
                  window.color(QPalette::WindowText));
    }
}

TEST_F(RunnerStatusPaintingTest, FontsFollowTheDesktop) {
    Looks changing(Scheme::light);
    show({"mini"});
    changing.change(Scheme::light, 20);
    EXPECT_NEAR(part(0, "name")->font().pointSizeF(), 20, 0.01);
    EXPECT_EQ(part(0, "name")->font().weight(), QFont::DemiBold);
    EXPECT_NEAR(part(0, "status")->font().pointSizeF(), 20 * 12.0 / 13, 0.01);
    EXPECT_NEAR(part<TabularLabel>(0, "uptime")->font().pointSizeF(), 20 * 12.0 / 13, 0.01);
    EXPECT_NEAR(footnote()->font().pointSizeF(), 20 * 10.0 / 13, 0.01);
}

}  // namespace
}  // namespace valdorn
