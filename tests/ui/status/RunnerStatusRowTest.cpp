#include <QAccessible>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/StatusDot.h"
#include "ui/SystemPalette.h"
#include "ui/TabularLabel.h"
#include "ui/status/RunnerStatusTest.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

using RunnerStatusRowTest = RunnerStatusTest;

// A row.

TEST_F(RunnerStatusRowTest, RowTellsAboutItsRunner) {
    show({"mini", "spare"});
    stage.print(stage.start(0), StatusStage::declared("v1.0.7"));
    stage.releaseIs("v1.0.8");
    EXPECT_EQ(text(0, "name"), "mini");
    EXPECT_EQ(text(0, "status"), "Connected — idle");
    EXPECT_EQ(text(0, "version"), "· runner v1.0.7");
    EXPECT_EQ(uptime(0), "· up 0:00");
    EXPECT_EQ(text(0, "updateHint"), "update: v1.0.8 available");
    EXPECT_EQ(text(0, "build"), "-");
    stage.print(0, StatusStage::building("acme/site", "ci/test"));
    EXPECT_EQ(text(0, "build"), "Building acme/site (ci/test)");
    EXPECT_EQ(text(1, "status"), "Stopped");
    EXPECT_EQ(text(1, "version"), "-");
    EXPECT_EQ(uptime(1), "-");
    EXPECT_EQ(text(1, "updateHint"), "-");
}

TEST_F(RunnerStatusRowTest, RenamedRunnerIsRenamedHere) {
    show({"mini"});
    RunnerConfig record = stage.runner(0).config();
    record.name = "";
    stage.runner(0).setConfig(record);
    stage.settle();
    EXPECT_EQ(text(0, "name"), "runner");
}

TEST_F(RunnerStatusRowTest, PartThatIsGoneLeavesNoGap) {
    show({"mini"});
    const int height = rows()[0]->height();
    const std::size_t child = stage.start(0);
    stage.print(child, StatusStage::declared("v1"));
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->x(), part(0, "version")->geometry().right() + 7);
    EXPECT_EQ(part(0, "version")->x(), part(0, "status")->geometry().right() + 7);
    stage.print(child, StatusStage::building("a/b", "w/j"));
    EXPECT_GT(rows()[0]->height(), height);
    stage.runner(0).stop();
    stage.settle();
    EXPECT_EQ(rows()[0]->height(), height);
}

TEST_F(RunnerStatusRowTest, UptimeWithoutAVersionStandsBesideTheStatus) {
    show({"mini"});
    stage.start(0);
    EXPECT_EQ(text(0, "version"), "-");
    EXPECT_EQ(part<TabularLabel>(0, "uptime")->x(), part(0, "status")->geometry().right() + 7);
}

TEST_F(RunnerStatusRowTest, DotHasTheStatussColourAndTitle) {
    show({"mini"});
    stage.start(0);
    auto* const dot = part<StatusDot>(0, "statusDot");
    const auto* const seen = QAccessible::queryAccessibleInterface(dot);
    EXPECT_EQ(seen->role(), QAccessible::Graphic);
    EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Starting…"));
    const QColor middle = Pictures::render(*dot).pixelColor(5, 5);
    EXPECT_EQ(middle, SystemPalette::dot(SystemColor::yellow, rows()[0]->palette()));
    stage.print(0, "permission denied\n");
    EXPECT_EQ(Pictures::render(*dot).pixelColor(5, 5),
              SystemPalette::dot(SystemColor::red, rows()[0]->palette()));
}

TEST_F(RunnerStatusRowTest, DotStandsBesideTheMiddleOfTheFirstLine) {
    Looks large(Scheme::light);
    show({"mini"});
    for (const double points : {10.0, 18.0}) {
        large.change(Scheme::light, points);
        paintAll();
        const QRect dot = placeOf(part<StatusDot>(0, "statusDot"), rows()[0]);
        const QRect name = placeOf(part(0, "name"), rows()[0]);
        EXPECT_NEAR(dot.center().y(), name.center().y(), 1) << points;
        EXPECT_EQ(dot.size(), QSize(10, 10));
        if (points == 10.0) {
            EXPECT_EQ(dot.top(), 4 + 6 + 5);  // the panel's own edge, the padding, above the dot
        }
    }
}

// The button.

TEST_F(RunnerStatusRowTest, ButtonStartsAndStopsThisRunnerAlone) {
    show({"a", "b"});
    EXPECT_EQ(button(1)->toolTip(), QStringLiteral("Start runner"));
    EXPECT_EQ(button(1)->symbol(), QStringLiteral("play.circle.fill"));
    click(1);
    EXPECT_EQ(stage.world.launcher.launches.size(), 1U);
    EXPECT_TRUE(stage.runner(1).isRunning());
    EXPECT_FALSE(stage.runner(0).isRunning());
    EXPECT_EQ(button(1)->toolTip(), QStringLiteral("Stop runner"));
    EXPECT_EQ(button(1)->accessibleName(), QStringLiteral("Stop runner"));
    EXPECT_EQ(button(1)->symbol(), QStringLiteral("stop.circle.fill"));
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Start runner"));
    click(1);
    EXPECT_EQ(stage.child(0).terminateRequests(), 1);
    EXPECT_FALSE(stage.runner(1).keepRunning());
    EXPECT_EQ(text(1, "status"), "Stopped");
}

TEST_F(RunnerStatusRowTest, ClickDecidesByWhatRunsThen) {
    show({"a"});
    stage.start(0);
    stage.child(0).end({});  // not shown yet
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Stop runner"));
    click(0);
    EXPECT_EQ(stage.world.launcher.launches.size(), 2U);
    EXPECT_EQ(stage.child(0).terminateRequests(), 0);
}

TEST_F(RunnerStatusRowTest, UnregisteredRunnerThatIsStartedSaysSo) {
    show({"a"});
    stage.world.files.files.clear();
    click(0);
    EXPECT_TRUE(stage.world.launcher.launches.empty());
    EXPECT_EQ(text(0, "status"), "Not registered");
    EXPECT_TRUE(button(0)->isEnabled());
    click(0);
    EXPECT_EQ(text(0, "status"), "Not registered");
}

TEST_F(RunnerStatusRowTest, DeadChildOfAStartingRunnerShowsWithinASecond) {
    show({"a"});
    stage.start(0);
    stage.pass(500ms);
    stage.end(0);
    stage.pass(500ms);
    EXPECT_EQ(text(0, "status"), "Starting…");
    EXPECT_EQ(part<StatusDot>(0, "statusDot")->accessibleName(), QStringLiteral("Starting…"));
    EXPECT_EQ(button(0)->toolTip(), QStringLiteral("Start runner"));
    EXPECT_EQ(uptime(0), "-");
}

// Names and texts as they come.

TEST_F(RunnerStatusRowTest, NamesAreNeverMarkup) {
    for (const char* const name : {"R&D", "<b>bold</b>", "two\nlines", "שרת", "🏗️ builder"}) {
        show({name});
        EXPECT_EQ(part(0, "name")->textFormat(), Qt::PlainText);
        EXPECT_EQ(text(0, "name"), name);
        EXPECT_EQ(rows()[0]->accessibleName().toStdString(), name);
        EXPECT_FALSE(part(0, "name")->shownText().contains(QLatin1Char('\n')));
        EXPECT_LT(part(0, "name")->height(), 24);
    }
}

TEST_F(RunnerStatusRowTest, ReleaseWithAnEndlessNameIsShownByItsEnds) {
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.releaseIs("v2" + std::string(900'000, 'x'));
    const QString shown = part(0, "updateHint")->shownText();
    EXPECT_TRUE(shown.startsWith(QStringLiteral("update: v2xx"))) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(QStringLiteral("xx available"))) << shown.toStdString();
    EXPECT_LT(rows()[0]->accessibleDescription().size(), 2100);
    stage.pass(1s);
    EXPECT_EQ(uptime(0), "· up 0:01");
}

// Those who do not see.

TEST_F(RunnerStatusRowTest, RowIsAGroupWithTheRunnersNameAndItsStateInWords) {
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.releaseIs("v2");
    stage.print(0, StatusStage::building("a/b", "w/j"));
    const auto* const row = QAccessible::queryAccessibleInterface(rows()[0]);
    EXPECT_EQ(row->role(), QAccessible::Grouping);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("mini"));
    EXPECT_EQ(row->text(QAccessible::Description),
              QStringLiteral("Building a job · runner v1, update: v2 available, "
                             "Building a/b (w/j)"));
    QWidget* const heading = stage.window->findChild<QLabel*>(QStringLiteral("heading"));
    const auto* const head = QAccessible::queryAccessibleInterface(heading);
    EXPECT_EQ(head->role(), QAccessible::Heading);
    EXPECT_EQ(head->text(QAccessible::Name), QStringLiteral("Runner"));
    const auto* const counter =
        QAccessible::queryAccessibleInterface(part<TabularLabel>(0, "uptime"));
    EXPECT_EQ(counter->role(), QAccessible::StaticText);
    EXPECT_EQ(counter->text(QAccessible::Name), QStringLiteral("· up 0:00"));
}

TEST_F(RunnerStatusRowTest, NewStatusIsReadOut) {
    show({"mini"});
    const auto* const status = QAccessible::queryAccessibleInterface(part(0, "status"));
    EXPECT_EQ(status->role(), QAccessible::StaticText);
    EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("Stopped"));
    stage.start(0);
    EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("Starting…"));
}

}  // namespace
}  // namespace valdorn
