#include <QAction>
#include <QMenu>
#include <optional>

#include <gtest/gtest.h>

#include "platform/qt/MenuRenderer.h"

namespace valdorn {
namespace {

class MenuRendererTest : public testing::Test {
protected:
    QAction* action(const char* id) { return menu.findChild<QAction*>(QLatin1String(id)); }

    void render() { renderer.emplace(model, menu); }

    std::string activated;
    MenuModel model{
        {{"status", "Status: —", false, false, false, 0, nullptr},
         {"build", "", false, true, false, 0, nullptr},
         {"", "", true, false, true, 0, nullptr},
         {"start", "Start Runner", true, false, false, 0, [this] { activated += "start "; }},
         {"open", "Runner Status…", true, false, false, 's', [this] { activated += "open "; }},
         {"settings", "Settings…", true, false, false, ',', [] {}},
         {"quit", "Quit Valdorn", true, false, false, 'q', [] {}}}};
    QMenu menu;
    std::optional<MenuRenderer> renderer;
};

TEST_F(MenuRendererTest, EntriesStandInTheModelsOrder) {
    render();
    const auto actions = menu.actions();
    ASSERT_EQ(actions.size(), 7);
    EXPECT_EQ(actions[0]->text(), QStringLiteral("Status: —"));
    EXPECT_TRUE(actions[2]->isSeparator());
    EXPECT_EQ(actions[3]->text(), QStringLiteral("Start Runner"));
    EXPECT_EQ(actions[6]->text(), QStringLiteral("Quit Valdorn"));
}

TEST_F(MenuRendererTest, StatesAreThoseOfTheModel) {
    render();
    EXPECT_FALSE(action("status")->isEnabled());
    EXPECT_TRUE(action("start")->isEnabled());
    EXPECT_FALSE(action("build")->isVisible());
    EXPECT_TRUE(action("status")->isVisible());
}

TEST_F(MenuRendererTest, ShortcutsGoWithControl) {
    render();
    EXPECT_EQ(action("open")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_S));
    EXPECT_EQ(action("settings")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
    EXPECT_EQ(action("quit")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    EXPECT_TRUE(action("start")->shortcut().isEmpty());
}

TEST_F(MenuRendererTest, ChosenEntryIsActivatedInTheModel) {
    render();
    action("open")->trigger();
    action("start")->trigger();
    EXPECT_EQ(activated, "open start ");
}

TEST_F(MenuRendererTest, ChangesKeepTheActions) {
    render();
    const auto before = menu.actions();
    model.setTitle("start", "Stop All");
    model.setTitle("build", "Building: x");
    model.setHidden("build", false);
    EXPECT_EQ(menu.actions(), before);
    EXPECT_EQ(action("start")->text(), QStringLiteral("Stop All"));
    EXPECT_EQ(action("build")->text(), QStringLiteral("Building: x"));
    EXPECT_TRUE(action("build")->isVisible());
    model.setHidden("build", true);
    EXPECT_FALSE(action("build")->isVisible());
}

TEST_F(MenuRendererTest, AmpersandsInNamesAreShownAsTheyAre) {
    render();
    model.setTitle("start", "R&D & Q_A");
    EXPECT_EQ(action("start")->text(), QStringLiteral("R&&D && Q_A"));
}

TEST_F(MenuRendererTest, ModelIsLeftAloneWhenTheRendererIsGone) {
    render();
    renderer.reset();
    model.setTitle("start", "Stop All");
    EXPECT_EQ(action("start")->text(), QStringLiteral("Start Runner"));
}

TEST_F(MenuRendererTest, TwoRenderersShowOneModel) {
    QMenu other;
    const MenuRenderer second(model, other);
    render();
    model.setTitle("quit", "Leave");
    EXPECT_EQ(menu.actions().last()->text(), QStringLiteral("Leave"));
    EXPECT_EQ(other.actions().last()->text(), QStringLiteral("Leave"));
}

}  // namespace
}  // namespace valdorn
