#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "simulation/Agreement.h"
#include "simulation/Marks.h"

namespace valdorn::simulation {
namespace {

// Each comparison is worth something only if it is told when there is something to tell.
class AgreementTest : public testing::Test {
protected:
    std::string found() {
        std::string all;
        for (const std::string& disagreement : disagreements(stage))
            all += disagreement + "\n";
        return all;
    }

    void expectTold(const std::string& what) {
        const std::string all = found();
        EXPECT_NE(all.find(what), std::string::npos) << all;
    }

    // A stage on which both agree, with a child that runs and a log window that is open.
    void SetUp() override {
        stage.settle();
        ASSERT_EQ(found(), "");
        ASSERT_GE(stage.program().store->runners().size(), 2U);
        ASSERT_TRUE(child().isRunning());
    }

    void openLog() {
        stage.program().makeViewer();
        stage.process().log = std::make_unique<ModelLog>(
            stage.process().machine,
            stage.fleet().runners().front()->dataFolder() + "/valdorn.log");
        stage.program().viewer->start();
        stage.process().log->start();
        stage.settle();
        ASSERT_EQ(found(), "");
    }

    RunnerManager& runner() { return *stage.program().store->runners().front(); }
    ScriptedChild& child() { return stage.program().launcher.child(0); }

    Stage stage{1};
};

TEST_F(AgreementTest, AFileOfOtherBytesIsTold) {
    stage.machine.files.files[ModelDisk::listPath()] += " ";
    expectTold("file " + ModelDisk::listPath());
}

TEST_F(AgreementTest, AFileTooManyIsTold) {
    stage.machine.files.files["/home/ada/stray"] = "";
    expectTold("the files");
}

TEST_F(AgreementTest, AnEditThatOnlyOneHasGotIsTold) {
    stage.program().store->runners().front()->setConfig({"x", "y", "", "", "", false});
    const std::string told = found();
    EXPECT_NE(told.find("a runner is"), std::string::npos);
    EXPECT_NE(told.find("what was announced"), std::string::npos);
    EXPECT_NE(told.find("how often the list was written"), std::string::npos);
}

TEST_F(AgreementTest, AnotherTitleIsTold) {
    stage.process().shell.menu.at(0).title = "Other";
    expectTold("the menu");
}

TEST_F(AgreementTest, AnotherIconIsTold) {
    stage.program().statusItem.setLength(99);
    expectTold("the icon");
}

TEST_F(AgreementTest, AnArmedTaskTooManyIsTold) {
    const auto task = stage.queue().after(std::chrono::seconds(1), [] {});
    expectTold("the number of armed tasks");
}

TEST_F(AgreementTest, ALaunchTooManyIsTold) {
    (void)stage.program().launcher.launch({"x", {}, "/", {}}, {});
    expectTold("what was launched");
}

TEST_F(AgreementTest, ARunnerThatNobodyShouldHaveIsTold) {
    stage.program().store->add("extra");
    expectTold("the number of runners made");
}

TEST_F(AgreementTest, AFolderTooManyIsTold) {
    (void)stage.machine.files.makeFolders("/home/ada/empty");
    expectTold("the folders");
}

TEST_F(AgreementTest, AFolderTooFewIsTold) {
    stage.model.disk.plantFolder("/home/ada/empty");
    expectTold("the folders");
}

TEST_F(AgreementTest, ASaveTooManyIsTold) {
    const std::string list = stage.machine.files.files.at(ModelDisk::listPath());
    (void)stage.machine.disk.replaceContent(ModelDisk::listPath(), list);
    expectTold("how often the list was written");
}

TEST_F(AgreementTest, AnotherSelectionIsTold) {
    stage.program().selection->select(stage.program().store->runners().back()->id());
    const std::string told = found();
    EXPECT_NE(told.find("the selected id"), std::string::npos);
    EXPECT_NE(told.find("another runner is selected"), std::string::npos);
    EXPECT_NE(told.find("what was announced"), std::string::npos);
}

TEST_F(AgreementTest, ARequestToEndThatOnlyOneHasGotIsTold) {
    child().noteTerminate();
    expectTold("how often a child was asked to end");
}

TEST_F(AgreementTest, AChildThatEndsInOneOfThemIsTold) {
    child().end({ChildExit::Kind::exited, 0});
    stage.settle();
    expectTold("whether a runner's child runs");
}

TEST_F(AgreementTest, AWindowTooManyIsTold) {
    stage.program().windows.show({});
    const std::string told = found();
    EXPECT_NE(told.find("the windows shown"), std::string::npos);
    EXPECT_NE(told.find("other windows are open"), std::string::npos);
}

TEST_F(AgreementTest, AWindowOfAnotherTitleIsTold) {
    stage.program().windows.show({WindowKind::settings, "Settings", 480, 340, false});
    stage.process().shell.show(WindowKind::settings);
    expectTold("the windows shown");
}

TEST_F(AgreementTest, AWindowThatTheProgramClosesIsTold) {
    stage.program().windows.close(WindowKind::status);
    expectTold("the program has closed a window");
}

TEST_F(AgreementTest, AnEndOfTheLoopTooManyIsTold) {
    ++stage.program().terminations;
    expectTold("how often the loop was ended");
}

TEST_F(AgreementTest, SettingsThatOnlyOneHasGotAreTold) {
    stage.machine.defaults.setString("labels", "other");
    stage.machine.defaults.setBoolean("stray", true);
    stage.machine.defaults.registerFallbacks({{"stray", ""}});
    const std::string told = found();
    EXPECT_NE(told.find("the settings' texts"), std::string::npos);
    EXPECT_NE(told.find("how many truths the settings hold"), std::string::npos);
    EXPECT_NE(told.find("the settings' fallbacks"), std::string::npos);
}

TEST_F(AgreementTest, ATokenThatOnlyOneHasGotIsTold) {
    stage.program().forms[0]->setToken("x");
    const std::string told = found();
    EXPECT_NE(told.find("a form is"), std::string::npos);
    EXPECT_NE(told.find("what was announced"), std::string::npos);
}

TEST_F(AgreementTest, AnAnnouncementOfTheSameTokenTwiceIsTold) {
    stage.program().forms[0]->setToken("x");
    stage.program().forms[0]->setToken("x");
    stage.process().forms[0]->setToken("x");
    expectTold("what was announced");
}

TEST_F(AgreementTest, ARunOfTheToolTooManyIsTold) {
    (void)stage.program().launcher.run({"x", {}, "/", {}}, [](std::string_view) {});
    expectTold("how the tool was called");
}

TEST_F(AgreementTest, ARunOfTheToolThatWaitsInOneOfThemIsTold) {
    stage.program().background.run([] {});
    expectTold("the runs of the tool that wait");
}

TEST_F(AgreementTest, ARequestTooManyIsTold) {
    const auto request =
        stage.program().http.get({"https://other.test", {}, 0}, [](const auto&) {});
    const std::string told = found();
    EXPECT_NE(told.find("the requests made"), std::string::npos);
    EXPECT_NE(told.find("another request was made"), std::string::npos);
}

TEST_F(AgreementTest, AReleaseThatOnlyOneKnowsIsTold) {
    stage.process().updates.latest = "v9";
    expectTold("the latest release");
}

TEST_F(AgreementTest, WhatOnlyOneSearchForATrayTellsIsTold) {
    stage.program().trayTold.emplace_back("missing");
    expectTold("what the search for a tray told");
}

TEST_F(AgreementTest, WhatOnlyOneGateLetsThroughIsTold) {
    stage.program().gate->ready();
    expectTold("what the launch gate let through");
}

TEST_F(AgreementTest, ALoginItemThatOnlyOneHasIsTold) {
    (void)stage.machine.loginItems.registerItem();
    stage.machine.systemLog.lines.emplace_back("x");
    const std::string told = found();
    EXPECT_NE(told.find("launch at login"), std::string::npos);
    EXPECT_NE(told.find("registrations"), std::string::npos);
    EXPECT_NE(told.find("the system log"), std::string::npos);
}

TEST_F(AgreementTest, LogLinesThatOnlyOneShowsAreTold) {
    openLog();
    stage.model.disk.plantFile(stage.fleet().runners().front()->dataFolder() + "/valdorn.log",
                               "a line\n");
    stage.process().log->stop();
    stage.process().log->start();
    const std::string told = found();
    EXPECT_NE(told.find("the log's lines"), std::string::npos);
    EXPECT_NE(told.find("the lines that pass"), std::string::npos);
    EXPECT_NE(told.find("how often the log was scrolled"), std::string::npos);
}

TEST_F(AgreementTest, ATaskThatWaitsIsTold) {
    stage.queue().post([] {});
    expectTold("the tasks that wait");
}

TEST_F(AgreementTest, OutputThatIsKeptForNobodyIsTold) {
    child().print("a line that is not taken in\n[a/b] of a job\n");
    expectTold("output is kept for nobody");
}

TEST_F(AgreementTest, AFileThatStaysOpenIsTold) {
    const auto kept = stage.machine.files.openForAppending(ModelDisk::listPath());
    expectTold("the number of open files");
}

TEST_F(AgreementTest, ALogThatIsClosedTooEarlyIsTold) {
    const std::size_t last = stage.process().machine.children.size() - 1;
    ASSERT_TRUE(stage.process().machine.children[last]->log);
    stage.program().launcher.child(last).end({ChildExit::Kind::exited, 0});
    stage.settle();
    expectTold("the number of open files");
}

TEST_F(AgreementTest, AFaultOfAStepIsTold) {
    stage.fail("a fault");
    expectTold("a fault");
}

}  // namespace
}  // namespace valdorn::simulation
