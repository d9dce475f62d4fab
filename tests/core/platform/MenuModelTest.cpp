#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "platform/MenuModel.h"

namespace valdorn {
namespace {

class MenuModelTest : public testing::Test {
protected:
    MenuItem item(const std::string& id, bool enabled = true) {
        MenuItem made;
        made.id = id;
        made.title = "Title of " + id;
        made.enabled = enabled;
        made.action = [this, id] { log += id + ";"; };
        return made;
    }

    MenuItem separator() {
        MenuItem made;
        made.separator = true;
        return made;
    }

    std::string log;
    MenuModel menu{{item("start"), separator(), item("status", false), item("quit")}};
    Subscription subscription = menu.onDidChange([this](const MenuItem& changed) {
        log += changed.id + "=" + changed.title + (changed.hidden ? " hidden;" : ";");
    });
};

TEST_F(MenuModelTest, KeepsTheOrderOfItsItems) {
    ASSERT_EQ(menu.items().size(), 4U);
    EXPECT_EQ(menu.items()[0].id, "start");
    EXPECT_TRUE(menu.items()[1].separator);
    EXPECT_EQ(menu.items()[3].id, "quit");
    EXPECT_EQ(menu.item("quit").title, "Title of quit");
}

TEST_F(MenuModelTest, TellsOfANewTitleWhenItCanBeRead) {
    menu.setTitle("start", "Go");
    EXPECT_EQ(log, "start=Go;");
    EXPECT_EQ(menu.item("start").title, "Go");
    EXPECT_EQ(menu.item("quit").title, "Title of quit");
}

TEST_F(MenuModelTest, TellsOfVisibility) {
    menu.setHidden("quit", true);
    EXPECT_TRUE(menu.item("quit").hidden);
    menu.setHidden("quit", false);
    EXPECT_EQ(log, "quit=Title of quit hidden;quit=Title of quit;");
}

TEST_F(MenuModelTest, SaysNothingWhenTheValueIsEqual) {
    menu.setTitle("start", "Title of start");
    menu.setHidden("start", false);
    EXPECT_EQ(log, "");
}

TEST_F(MenuModelTest, ReferencesToItemsStayValid) {
    const MenuItem& held = menu.item("start");
    menu.setTitle("start", "Go");
    EXPECT_EQ(held.title, "Go");
    EXPECT_EQ(&held, &menu.items()[0]);
}

TEST_F(MenuModelTest, ActivatingRunsTheAction) {
    menu.activate("start");
    menu.activate("quit");
    EXPECT_EQ(log, "start;quit;");
}

TEST_F(MenuModelTest, ADisabledItemDoesNothing) {
    menu.activate("status");
    EXPECT_EQ(log, "");
}

TEST_F(MenuModelTest, AnItemWithoutAnActionDoesNothing) {
    MenuItem plain;
    plain.id = "plain";
    const MenuModel other({plain});
    other.activate("plain");
}

using MenuModelDeathTest = MenuModelTest;

TEST_F(MenuModelDeathTest, AnIdThatNoItemHasEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(menu.item("stop"), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace valdorn
