#include <QCheckBox>

#include "ui/settings/SettingsTest.h"

namespace valdorn {
namespace {

using ValdornSettingsViewTest = SettingsTest;
using Names = std::vector<std::string>;

TEST_F(ValdornSettingsViewTest, ListsTheRunnersAndSelectsTheFirst) {
    show({"one", "two", "three"});
    EXPECT_EQ(stage.names(), (Names{"one", "two", "three"}));
    EXPECT_EQ(stage.highlighted(), 0);
    EXPECT_EQ(text("name"), "one");
}

TEST_F(ValdornSettingsViewTest, RunnerWithoutANameIsCalledRunner) {
    show({"", "two"});
    EXPECT_EQ(stage.names(), (Names{"runner", "two"}));
    EXPECT_EQ(text("name"), "");
}

TEST_F(ValdornSettingsViewTest, RowThatIsClickedIsTheRunnerThatIsEdited) {
    show({"one", "two"});
    stage.clickRow(1);
    EXPECT_EQ(stage.selection->selectedID(), "r1");
    EXPECT_EQ(text("name"), "two");
    stage.type("name", QStringLiteral("!"));
    EXPECT_EQ(stage.runner(1).config().name, "two!");
    EXPECT_EQ(stage.runner(0).config().name, "one");
}

TEST_F(ValdornSettingsViewTest, WhatTheUserDoesIsShownAtOnce) {
    show({"one", "two"});
    QTest::mouseClick(stage.list().viewport(), Qt::LeftButton, Qt::NoModifier,
                      stage.list().visualItemRect(stage.list().item(1)).center());
    EXPECT_EQ(text("name"), "two") << "the next key is meant for this one";
    stage.button("addRunner").click();
    EXPECT_EQ(text("name"), "new-runner");
    stage.button("removeRunner").click();
    EXPECT_EQ(text("name"), "one");
    stage.button("removeRunner").click();
    stage.button("removeRunner").click();
    EXPECT_EQ(stage.names(), Names{"two"});
}

TEST_F(ValdornSettingsViewTest, NamesAreOneLineOfSomeLength) {
    show({"two\nlines", std::string(5000, 'x')});
    EXPECT_EQ(stage.names().front(), "two lines");
    EXPECT_LT(stage.names().back().size(), 3000U);
}

TEST_F(ValdornSettingsViewTest, ArrowKeysSelect) {
    show({"one", "two"});
    stage.list().setFocus();
    QTest::keyClick(&stage.list(), Qt::Key_Down);
    stage.settle();
    EXPECT_EQ(stage.selection->selectedID(), "r1");
    EXPECT_EQ(text("name"), "two");
}

TEST_F(ValdornSettingsViewTest, WithNoRowHighlightedTheFirstRunnerIsShownAndRemoved) {
    show({"one", "two", "three"});
    stage.clickRow(1);
    QTest::mouseClick(stage.list().viewport(), Qt::LeftButton, Qt::ControlModifier,
                      stage.list().visualItemRect(stage.list().item(1)).center());
    stage.settle();
    EXPECT_EQ(stage.highlighted(), -1);
    EXPECT_EQ(stage.selection->selectedID(), std::nullopt);
    EXPECT_EQ(text("name"), "one");
    EXPECT_TRUE(isEnabled("removeRunner"));
    click("removeRunner");
    EXPECT_EQ(stage.names(), (Names{"two", "three"}));
    EXPECT_EQ(stage.highlighted(), 0);
}

TEST_F(ValdornSettingsViewTest, AddsRunnersOfOneNameAndSelectsTheLast) {
    show({"one"});
    click("addRunner");
    click("addRunner");
    EXPECT_EQ(stage.names(), (Names{"one", "new-runner", "new-runner"}));
    EXPECT_EQ(stage.highlighted(), 2);
    EXPECT_EQ(text("name"), "new-runner");
    EXPECT_EQ(text("labels"), "macos");
    EXPECT_NE(stage.runner(1).id(), stage.runner(2).id());
    stage.type("name", QStringLiteral("2"));
    EXPECT_EQ(stage.runner(1).config().name, "new-runner");
    EXPECT_EQ(stage.runner(2).config().name, "new-runner2");
}

TEST_F(ValdornSettingsViewTest, LastRunnerCannotBeRemoved) {
    show({"one"});
    EXPECT_FALSE(isEnabled("removeRunner"));
    click("removeRunner");
    EXPECT_EQ(stage.names(), (Names{"one"}));
    click("addRunner");
    EXPECT_TRUE(isEnabled("removeRunner"));
    click("removeRunner");
    EXPECT_EQ(stage.names(), (Names{"one"}));
    EXPECT_EQ(stage.highlighted(), 0);
    EXPECT_FALSE(isEnabled("removeRunner"));
}

TEST_F(ValdornSettingsViewTest, RemovingSelectsTheFirstRunner) {
    show({"one", "two", "three"});
    stage.clickRow(2);
    click("removeRunner");
    EXPECT_EQ(stage.names(), (Names{"one", "two"}));
    EXPECT_EQ(stage.highlighted(), 0);
    EXPECT_EQ(text("name"), "one");
}

TEST_F(ValdornSettingsViewTest, RunnersThatOthersAddAndRemoveAreShown) {
    show({"one"});
    const auto added = stage.store->add("added elsewhere");
    stage.settle();
    EXPECT_EQ(stage.names(), (Names{"one", "added elsewhere"}));
    EXPECT_EQ(stage.highlighted(), 0);
    EXPECT_TRUE(isEnabled("removeRunner"));
    stage.clickRow(1);
    stage.store->remove(added);
    stage.settle();
    EXPECT_EQ(stage.names(), (Names{"one"}));
    EXPECT_EQ(stage.highlighted(), -1) << "nothing has been selected in its place";
    EXPECT_EQ(text("name"), "one");
}

TEST_F(ValdornSettingsViewTest, RowThatIsBeingRenamedKeepsItsNameUntilTheNextRedraw) {
    show({"one", "two"});
    stage.type("name", QStringLiteral("!"));
    EXPECT_EQ(stage.names(), (Names{"one", "two"}));
    stage.runner(0).start();
    stage.settle();
    stage.view->hide();
    stage.view->show();
    stage.settle();
    EXPECT_EQ(stage.names(), (Names{"one", "two"}));
    stage.clickRow(1);
    EXPECT_EQ(stage.names(), (Names{"one!", "two"}));
    stage.type("name", QStringLiteral("?"));
    click("addRunner");
    EXPECT_EQ(stage.names(), (Names{"one!", "two?", "new-runner"}));
    stage.type("name", QStringLiteral("X"));
    stage.store->remove(stage.store->runners()[0]);
    stage.settle();
    EXPECT_EQ(stage.names(), (Names{"two?", "new-runnerX"}));
}

TEST_F(ValdornSettingsViewTest, SelectionIsKeptWhileTheWindowIsClosed) {
    show({"one", "two"});
    stage.clickRow(1);
    stage.view->hide();
    stage.view->show();
    stage.settle();
    EXPECT_EQ(stage.highlighted(), 1);
    EXPECT_EQ(text("name"), "two");
}

class LaunchSwitchTest : public SettingsTest {
protected:
    QCheckBox& launch() { return stage.find<QCheckBox>("launchAtLogin"); }
    void expectChanges(int registrations, int unregistrations) {
        EXPECT_EQ(stage.loginItems.registrations, registrations);
        EXPECT_EQ(stage.loginItems.unregistrations, unregistrations);
    }
};

TEST_F(LaunchSwitchTest, ShowsWhatTheRegistrySays) {
    show({"one"});
    EXPECT_FALSE(launch().isChecked());
    stage.loginItems.current = LoginItemStatus::enabled;
    stage.show();
    EXPECT_TRUE(launch().isChecked());
    expectChanges(0, 0);
}

TEST_F(LaunchSwitchTest, ChangesTheRegistryOnceForEachClick) {
    show({"one"});
    click("launchAtLogin");
    expectChanges(1, 0);
    EXPECT_TRUE(launch().isChecked());
    click("launchAtLogin");
    expectChanges(1, 1);
    EXPECT_FALSE(launch().isChecked());
}

TEST_F(LaunchSwitchTest, StaysWhereTheUserPutItWhenTheRegistryRefuses) {
    show({"one"});
    stage.loginItems.failWith = "no room";
    click("launchAtLogin");
    EXPECT_TRUE(launch().isChecked());
    EXPECT_EQ(stage.log.lines,
              (std::vector<std::string>{"Valdorn: login-item toggle failed: no room"}));
    stage.view->hide();
    stage.view->show();
    stage.settle();
    EXPECT_TRUE(launch().isChecked());
}

TEST_F(LaunchSwitchTest, IsNotReadAgain) {
    show({"one"});
    stage.loginItems.current = LoginItemStatus::enabled;
    stage.view->hide();
    stage.view->show();
    stage.settle();
    EXPECT_FALSE(launch().isChecked());
}

TEST_F(LaunchSwitchTest, SpaceSwitches) {
    show({"one"});
    launch().setFocus();
    QTest::keyClick(&launch(), Qt::Key_Space);
    expectChanges(1, 0);
}

}  // namespace
}  // namespace valdorn
