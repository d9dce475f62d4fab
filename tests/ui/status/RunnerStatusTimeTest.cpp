#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/SystemPalette.h"
#include "ui/status/RunnerStatusTest.h"
#include "ui/status/RunnerStatusView.h"
#include "update/UpdateChecker.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

using RunnerStatusTimeTest = RunnerStatusTest;

// Time.

TEST_F(RunnerStatusTimeTest, UptimeTicksAtEachFullSecond) {
    stage.makeFleet({"a"});
    stage.start(0);
    stage.pass(300ms);
    stage.show();
    EXPECT_EQ(stage.world.queue.armed(), 1U);
    EXPECT_EQ(uptime(0), "· up 0:00");
    stage.pass(699ms);
    EXPECT_EQ(uptime(0), "· up 0:00");
    stage.pass(1ms);
    EXPECT_EQ(uptime(0), "· up 0:01");
    stage.pass(1s);
    EXPECT_EQ(uptime(0), "· up 0:02");
    EXPECT_EQ(stage.world.queue.armed(), 1U);
}

TEST_F(RunnerStatusTimeTest, UptimesOfRunnersThatWereLaunchedTogetherGoOnTogether) {
    stage.makeFleet({"a", "b"});
    stage.pass(10ms);
    stage.start(0);
    stage.pass(50ms);
    stage.start(1);
    stage.show();
    stage.pass(1039ms);
    EXPECT_EQ(uptime(0), "· up 0:00");
    EXPECT_EQ(uptime(1), "· up 0:00");
    stage.pass(1ms);
    EXPECT_EQ(uptime(0), "· up 0:01");
    EXPECT_EQ(uptime(1), "· up 0:01");
}

TEST_F(RunnerStatusTimeTest, NothingIsArmedWhereNothingRuns) {
    show({"a", "b"});
    EXPECT_EQ(stage.world.queue.pending(), 0U);
}

TEST_F(RunnerStatusTimeTest, NothingIsArmedWhereNobodyLooks) {
    show({"a"});
    stage.start(0);
    EXPECT_EQ(stage.world.queue.pending(), 1U);
    stage.window->hide();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.print(0, StatusStage::declared("v1"));
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.pass(10s);
    stage.window->show();
    EXPECT_EQ(uptime(0), "· up 0:10");
    EXPECT_EQ(stage.world.queue.pending(), 1U);
}

TEST_F(RunnerStatusTimeTest, ViewThatWasNeverShownArmsNothing) {
    stage.makeFleet({"a"});
    stage.start(0);
    const RunnerStatusView view(
        stage.store, stage.world.queue,
        std::make_unique<UpdateChecker>(stage.http, "https://release.test"));
    stage.settle();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    EXPECT_TRUE(stage.http.queries.empty());
}

TEST_F(RunnerStatusTimeTest, UptimesStandStillWhileTheWindowIsMinimised) {
    show({"a"});
    stage.start(0);
    stage.window->showMinimized();
    paintAll();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.pass(5s);
    stage.window->showNormal();
    paintAll();
    EXPECT_EQ(uptime(0), "· up 0:05");
    EXPECT_EQ(stage.world.queue.pending(), 1U);
}

TEST_F(RunnerStatusTimeTest, RunnerAddedLaterTicksToo) {
    show({"a"});
    stage.world.markRegistered(stage.store->add("b")->id());
    stage.settle();
    stage.start(1);
    stage.pass(2s);
    EXPECT_EQ(uptime(1), "· up 0:02");
}

TEST_F(RunnerStatusTimeTest, DestroyedViewLeavesNothingBehind) {
    show({"a"});
    stage.start(0);
    stage.runner(0).stop();  // announces changes that nobody looks at any more
    stage.store->add("b");
    stage.window.reset();
    stage.world.queue.runPosted();
    EXPECT_EQ(stage.world.queue.pending(), 0U);
    stage.start(0);
}

// The release check.

TEST_F(RunnerStatusTimeTest, AsksForTheReleaseEachTimeItAppearsUntilItKnows) {
    show({"a"});
    EXPECT_EQ(stage.http.queries.size(), 1U);
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.http.queries.size(), 2U);
    stage.pass(24h);
    EXPECT_EQ(stage.http.queries.size(), 2U);
    stage.releaseIs("v1");
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(stage.http.queries.size(), 2U);
}

TEST_F(RunnerStatusTimeTest, ComingBackFromMinimisedIsNoNewAppearance) {
    show({"a"});
    stage.window->showMinimized();
    paintAll();
    stage.window->showNormal();
    paintAll();
    EXPECT_EQ(stage.http.queries.size(), 1U);
}

TEST_F(RunnerStatusTimeTest, AnswerReachesEveryRowAndThoseThatComeLater) {
    show({"a", "b"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.print(stage.start(1), StatusStage::declared("v2"));
    EXPECT_EQ(text(0, "updateHint"), "-");
    stage.releaseIs("v2");
    EXPECT_EQ(text(0, "updateHint"), "update: v2 available");
    EXPECT_EQ(text(1, "updateHint"), "runner is up to date");
    const auto& palette = rows()[0]->palette();
    EXPECT_EQ(part(0, "updateHint")->palette().color(QPalette::WindowText),
              SystemPalette::text(SystemColor::orange, palette));
    EXPECT_EQ(part(1, "updateHint")->palette().color(QPalette::WindowText),
              SystemPalette::text(SystemColor::secondary, palette));
    stage.world.markRegistered(stage.store->add("c")->id());
    stage.print(stage.start(2), StatusStage::declared("v1"));
    EXPECT_EQ(text(2, "updateHint"), "update: v2 available");
    stage.window->hide();
    stage.window->show();
    EXPECT_EQ(text(0, "updateHint"), "update: v2 available");
}

TEST_F(RunnerStatusTimeTest, FailedCheckShowsNothing) {
    show({"a"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    stage.http.answer(0, HttpError{HttpError::Kind::network, "no network"});
    stage.settle();
    EXPECT_EQ(text(0, "updateHint"), "-");
}

}  // namespace
}  // namespace valdorn
