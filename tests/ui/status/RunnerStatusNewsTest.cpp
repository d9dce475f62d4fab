#include <gtest/gtest.h>

#include "ui/Announcements.h"
#include "ui/Announcer.h"
#include "ui/status/RunnerStatusTest.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

using Said = std::vector<std::string>;

// What is said of the rows without being asked for.
class RunnerStatusNewsTest : public RunnerStatusTest {
protected:
    Said announced() {
        stage.pass(Announcer::gathering);
        return announcements.take();
    }

    Announcements announcements;
};

TEST_F(RunnerStatusNewsTest, WindowThatComesUpSaysNothingOfItsOwnAccord) {
    stage.makeThreeRunners();
    stage.show();
    EXPECT_EQ(announced(), Said{});
}

TEST_F(RunnerStatusNewsTest, StatusIsSaidWhenItChanges) {
    show({"mini", "spare"});
    const std::size_t child = stage.start(0);
    EXPECT_EQ(announced(), Said{"mini: Starting…"});
    stage.print(child, StatusStage::declared("v1"));
    EXPECT_EQ(announced(), Said{"mini: Connected — idle"});
    stage.runner(0).stop();
    stage.settle();
    EXPECT_EQ(announced(), Said{"mini: Stopped"});
}

TEST_F(RunnerStatusNewsTest, WhatManyRunnersGoThroughAtOnceIsSaidAtOnce) {
    show({"mini", "spare"});
    stage.start(0);
    stage.print(stage.start(1), StatusStage::declared("v1"));
    EXPECT_EQ(announced(), Said{"mini: Starting…. spare: Connected — idle"});
}

TEST_F(RunnerStatusNewsTest, ClockTicksInSilence) {
    show({"mini"});
    stage.print(stage.start(0), StatusStage::declared("v1"));
    announced();
    stage.pass(90s);
    EXPECT_EQ(announcements.take(), Said{});
    EXPECT_EQ(uptime(0), "· up 1:30");
}

TEST_F(RunnerStatusNewsTest, NewerReleaseIsSaidOnceAndAnUpToDateRunnerIsNot) {
    show({"mini", "spare"});
    stage.print(stage.start(0), StatusStage::declared("v1.0.7"));
    stage.print(stage.start(1), StatusStage::declared("v1.0.8"));
    announced();
    stage.releaseIs("v1.0.8");
    EXPECT_EQ(announced(), Said{"mini: update: v1.0.8 available"});
    stage.runner(0).stop();
    stage.settle();
    EXPECT_EQ(announced(), Said{"mini: Stopped"});
}

TEST_F(RunnerStatusNewsTest, BuildOfARunnerThatIsBuildingIsNoOtherStatus) {
    show({"mini"});
    const std::size_t child = stage.start(0);
    stage.print(child, StatusStage::building("acme/site", "ci/lint"));
    EXPECT_EQ(announced(), Said{"mini: Building a job"});
    stage.print(child, "[ci/test] next\n");
    EXPECT_EQ(announced(), Said{});
}

TEST_F(RunnerStatusNewsTest, RunnerThatGoesLeavesItsNews) {
    show({"mini", "spare"});
    stage.start(0);
    stage.store->remove(stage.store->runners().front());
    stage.settle();
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_EQ(announced(), Said{"mini: Starting…"});
}

TEST_F(RunnerStatusNewsTest, ClosedWindowIsSilentAndHasNoOldNewsAfterwards) {
    show({"mini"});
    stage.window->hide();
    stage.start(0);
    EXPECT_EQ(announced(), Said{});
    stage.window->show();
    stage.settle();
    EXPECT_EQ(announced(), Said{});
}

}  // namespace
}  // namespace valdorn
