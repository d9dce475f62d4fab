#include <gtest/gtest.h>

#include "ui/status/RunnerRowContent.h"
#include "ui/status/StatusStage.h"
#include "ui/status/UpdateHints.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class RunnerRowContentTest : public testing::Test {
protected:
    RunnerRowContentTest() { stage.makeFleet({"mini"}); }

    RunnerRowContent content(const std::optional<std::string>& latest = std::nullopt) {
        UpdateHints hints;
        hints.setLatest(latest);
        return RunnerRowContent::of(stage.runner(0), hints, stage.world.queue.now());
    }
    std::string hint(const std::string& latest) {
        const auto found = content(latest).updateHint;
        return found ? found->text : "none";
    }

    StatusStage stage;
};

TEST_F(RunnerRowContentTest, NameIsTheRecords) {
    EXPECT_EQ(content().name, "mini");
}

TEST_F(RunnerRowContentTest, EmptyNameReadsRunnerAndOneOfBlanksStays) {
    RunnerConfig record = stage.runner(0).config();
    record.name = "";
    stage.runner(0).setConfig(record);
    EXPECT_EQ(content().name, "runner");
    record.name = "  ";
    stage.runner(0).setConfig(record);
    EXPECT_EQ(content().name, "  ");
}

TEST_F(RunnerRowContentTest, EachStatusHasItsWordsAndColour) {
    const auto expect = [this](const char* text, SystemColor color) {
        EXPECT_EQ(content().statusText, text);
        EXPECT_EQ(content().dotColor, color) << text;
    };
    expect("Stopped", SystemColor::secondary);
    stage.world.files.files.clear();
    stage.runner(0).start();
    stage.settle();
    expect("Not registered", SystemColor::secondary);
    stage.world.markRegistered("r0");
    const std::size_t child = stage.start(0);
    expect("Starting…", SystemColor::yellow);
    stage.print(child, "no route to host\n");
    expect("No local-network access", SystemColor::red);
    stage.print(child, StatusStage::declared("v1"));
    expect("Connected — idle", SystemColor::green);
    stage.print(child, StatusStage::building("a/b", "w/j"));
    expect("Building a job", SystemColor::blue);
}

TEST_F(RunnerRowContentTest, VersionIsShownOnceKnown) {
    const std::size_t child = stage.start(0);
    EXPECT_EQ(content().version, std::nullopt);
    stage.print(child, StatusStage::declared("0.2.11"));
    EXPECT_EQ(content().version, "· runner 0.2.11");
}

TEST_F(RunnerRowContentTest, UptimeCountsFromTheLaunch) {
    EXPECT_EQ(content().uptime, std::nullopt);
    stage.start(0);
    EXPECT_EQ(content().uptime, "· up 0:00");
    stage.pass(59'999ms);
    EXPECT_EQ(content().uptime, "· up 0:59");
    stage.pass(1ms);
    EXPECT_EQ(content().uptime, "· up 1:00");
}

TEST_F(RunnerRowContentTest, NoUptimeWhereNothingRunsAlthoughTheStartIsKnown) {
    const std::size_t child = stage.start(0);
    stage.end(child);
    ASSERT_TRUE(stage.runner(0).startedAt());
    EXPECT_EQ(content().uptime, std::nullopt);
    EXPECT_FALSE(content().isRunning);
    EXPECT_EQ(content().statusText, "Starting…");
    EXPECT_EQ(content().dotColor, SystemColor::yellow);
}

TEST_F(RunnerRowContentTest, NoUptimeWhereTheStartIsUnknownAlthoughItRuns) {
    stage.runner(0).start();  // when it was launched is published a turn later
    EXPECT_TRUE(content().isRunning);
    EXPECT_EQ(content().uptime, std::nullopt);
}

TEST_F(RunnerRowContentTest, HintNeedsBothVersions) {
    EXPECT_EQ(hint("v1.0.8"), "none");
    stage.print(stage.start(0), StatusStage::declared("v1.0.8"));
    EXPECT_EQ(content().updateHint, std::nullopt);
    EXPECT_EQ(hint("v1.0.8"), "runner is up to date");
}

TEST_F(RunnerRowContentTest, HintOffersWhatIsNewerInOrange) {
    stage.print(stage.start(0), StatusStage::declared("0.2.11"));
    EXPECT_EQ(hint("0.2.12"), "update: 0.2.12 available");
    EXPECT_EQ(content("0.2.12").updateHint->color, SystemColor::orange);
    EXPECT_EQ(hint("v0.3"), "update: v0.3 available");
    EXPECT_EQ(hint("0.2.10"), "runner is up to date");
    EXPECT_EQ(content("0.2.11").updateHint->color, SystemColor::secondary);
    EXPECT_EQ(content("available").updateHint->color, SystemColor::secondary);
}

TEST_F(RunnerRowContentTest, BuildLineNamesTheBuildAndItsJob) {
    const std::size_t child = stage.start(0);
    stage.print(child, "task 3 repo is #12 http://gitea.test\n");
    EXPECT_EQ(content().buildLine, "Building #12");
    stage.print(child, "[ci/lint] start\n");
    EXPECT_EQ(content().buildLine, "Building #12 (ci/lint)");
}

TEST_F(RunnerRowContentTest, JobWithoutABuildIsNoBuildLine) {
    stage.print(stage.start(0), "[ci/lint] start\n");
    ASSERT_TRUE(stage.runner(0).currentJob());
    EXPECT_EQ(content().buildLine, std::nullopt);
}

TEST_F(RunnerRowContentTest, AnythingThatDiffersMakesADifference) {
    const RunnerRowContent before = content();
    EXPECT_EQ(before, content());
    stage.start(0);
    EXPECT_NE(before, content());
}

TEST(ElapsedTextTest, CountsMinutesHoursAndGoesOnAfterADay) {
    EXPECT_EQ(elapsedText(-1s), "0:00");
    EXPECT_EQ(elapsedText(0s), "0:00");
    EXPECT_EQ(elapsedText(9s), "0:09");
    EXPECT_EQ(elapsedText(245s), "4:05");
    EXPECT_EQ(elapsedText(3599s), "59:59");
    EXPECT_EQ(elapsedText(1h), "1:00:00");
    EXPECT_EQ(elapsedText(1h + 4min + 5s), "1:04:05");
    EXPECT_EQ(elapsedText(26h + 3min + 5s), "26:03:05");
    EXPECT_EQ(elapsedText(1000h), "1000:00:00");
}

}  // namespace
}  // namespace valdorn
