#include <QAccessible>
#include <QCheckBox>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>

#include "ui/SymbolButton.h"
#include "ui/settings/SettingsTest.h"

namespace valdorn {
namespace {

using SettingsRoomTest = SettingsTest;

TEST_F(SettingsRoomTest, Is620By400WhateverTheToolHasSaid) {
    show({"one"});
    EXPECT_EQ(stage.view->minimumSizeHint(), QSize(620, 400));
    stage.world.toolFails(std::string(4000, 'x'));
    stage.type("token", QStringLiteral("t"));
    click("register");
    stage.finishRegistration();
    EXPECT_TRUE(isShown("message"));
    EXPECT_EQ(stage.view->minimumSizeHint(), QSize(620, 400));
}

TEST_F(SettingsRoomTest, SidebarButtonsAndFieldsLineUp) {
    show({"one"});
    EXPECT_EQ(placeOf(stage.find<QWidget>("runnerSidebar")).width(), 180);
    EXPECT_EQ(placeOf(stage.find<QWidget>("addRunner")).left(), 6);
    const QRect remove = placeOf(stage.find<QWidget>("removeRunner"));
    EXPECT_EQ(remove.left() - placeOf(stage.find<QWidget>("addRunner")).right() - 1, 4);
    const QRect launch = placeOf(stage.find<QWidget>("launchAtLogin"));
    EXPECT_EQ(stage.view->height() - launch.bottom() - 1, 10);
    EXPECT_NEAR(launch.center().x(), 310, 1);
    // The fields of both sections line up.
    EXPECT_EQ(placeOf(stage.field("token")).left(), placeOf(stage.field("name")).left());
    EXPECT_EQ(placeOf(stage.field("token")).right(), placeOf(stage.field("name")).right());
}

TEST_F(SettingsRoomTest, GrowsWithTheFontUntilNothingIsClipped) {
    const Looks large(Scheme::light, 13.5);
    show({"one", "two"});
    EXPECT_GT(stage.view->minimumSizeHint().height(), 400);
    for (const char* const name : {"instanceURL", "name", "labels", "extraPath", "token", "help",
                                   "register", "launchAtLogin"}) {
        const auto& part = stage.find<QWidget>(name);
        EXPECT_TRUE(stage.view->rect().contains(placeOf(part))) << name;
        EXPECT_GE(part.width(), part.minimumSizeHint().width()) << name;
        EXPECT_GE(part.height(),
                  std::max(part.minimumSizeHint().height(), part.heightForWidth(part.width())))
            << name;
        EXPECT_FALSE(part.visibleRegion().isEmpty()) << name;
        EXPECT_EQ(part.visibleRegion().boundingRect(), part.rect()) << name;
    }
}

TEST_F(SettingsRoomTest, TabFollowsTheEye) {
    show({"one", "two"});
    stage.clickRow(1);
    stage.type("token", QStringLiteral("t"));
    stage.list().setFocus();
    std::vector<std::string> walked;
    for (int step = 0; step < 9; ++step) {
        QTest::keyClick(stage.view->focusWidget(), Qt::Key_Tab);
        walked.push_back(stage.view->focusWidget()->objectName().toStdString());
    }
    EXPECT_EQ(walked, (std::vector<std::string>{"addRunner", "removeRunner", "instanceURL", "name",
                                                "labels", "extraPath", "token", "register",
                                                "launchAtLogin"}));
    QTest::keyClick(stage.view->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(stage.view->focusWidget(), &stage.list());
}

TEST_F(SettingsRoomTest, KeyboardBeginsAtTheList) {
    show({"one"});
    EXPECT_EQ(stage.view->focusWidget(), &stage.list());
}

TEST_F(SettingsRoomTest, KeyboardStaysInTheSidebarWhenRemovingIsOver) {
    show({"one", "two"});
    stage.button("removeRunner").setFocus();
    QTest::keyClick(&stage.button("removeRunner"), Qt::Key_Space);
    stage.settle();
    EXPECT_EQ(stage.names().size(), 1U);
    EXPECT_TRUE(stage.list().hasFocus());
}

TEST_F(SettingsRoomTest, EverythingHasAName) {
    show({"one"});
    const auto nameOf = [](QWidget& widget) {
        return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
    };
    EXPECT_EQ(nameOf(stage.list()), QStringLiteral("Runners"));
    EXPECT_EQ(nameOf(stage.button("addRunner")), QStringLiteral("Add a runner"));
    EXPECT_EQ(nameOf(stage.button("removeRunner")), QStringLiteral("Remove the selected runner"));
    EXPECT_EQ(stage.button("addRunner").toolTip(), QStringLiteral("Add a runner"));
    EXPECT_EQ(stage.button("removeRunner").toolTip(), QStringLiteral("Remove the selected runner"));
    EXPECT_EQ(nameOf(stage.field("instanceURL")), QStringLiteral("Gitea URL"));
    EXPECT_EQ(nameOf(stage.field("name")), QStringLiteral("Name"));
    EXPECT_EQ(nameOf(stage.field("labels")), QStringLiteral("Labels"));
    EXPECT_EQ(nameOf(stage.field("extraPath")), QStringLiteral("Extra PATH"));
    EXPECT_EQ(nameOf(stage.field("token")), QStringLiteral("Registration token"));
    EXPECT_EQ(nameOf(stage.find<QWidget>("spinner")), QStringLiteral("Registering"));
    EXPECT_EQ(nameOf(stage.button("launchAtLogin")), QStringLiteral("Launch Valdorn at login"));
}

TEST_F(SettingsRoomTest, SectionsAreGroupsWithHeadings) {
    show({"one"});
    for (const char* const title : {"Runner", "Register"}) {
        std::vector<QAccessible::Role> roles;
        for (QWidget* const widget : stage.view->findChildren<QWidget*>()) {
            const auto* const seen = QAccessible::queryAccessibleInterface(widget);
            if (seen->text(QAccessible::Name) == QLatin1String(title))
                roles.push_back(seen->role());
        }
        EXPECT_NE(std::find(roles.begin(), roles.end(), QAccessible::Heading), roles.end());
        EXPECT_NE(std::find(roles.begin(), roles.end(), QAccessible::Grouping), roles.end());
    }
}

TEST_F(SettingsRoomTest, ButtonsHaveTheirSymbols) {
    show({"one"});
    EXPECT_EQ(stage.find<SymbolButton>("addRunner").symbol(), QStringLiteral("plus"));
    EXPECT_EQ(stage.find<SymbolButton>("removeRunner").symbol(), QStringLiteral("minus"));
    EXPECT_FALSE(stage.list().item(0)->icon().isNull());
}

TEST_F(SettingsRoomTest, NameThatDoesNotFitIsTheTooltip) {
    const std::string name = "begin <b>\n" + std::string(200, 'x') + " end";
    show({name, "short"});
    const auto toolTipOf = [this](int row) {
        const QPoint place = stage.list().visualItemRect(stage.list().item(row)).center();
        QHelpEvent event(QEvent::ToolTip, place, stage.list().viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(stage.list().viewport(), &event);
        return QToolTip::text();
    };
    EXPECT_TRUE(toolTipOf(0).contains(QStringLiteral("&lt;b&gt;")));
    EXPECT_FALSE(toolTipOf(1).contains(QStringLiteral("short")));
    EXPECT_EQ(stage.list().horizontalScrollBar()->maximum(), 0);
    EXPECT_EQ(stage.list().visualItemRect(stage.list().item(0)).height(),
              stage.list().visualItemRect(stage.list().item(1)).height());
}

TEST_F(SettingsRoomTest, ManyRunnersScroll) {
    show(std::vector<std::string>(40, "runner"));
    EXPECT_GT(stage.list().verticalScrollBar()->maximum(), 0);
    click("addRunner");
    EXPECT_EQ(stage.highlighted(), 40);
    EXPECT_TRUE(stage.list().viewport()->rect().contains(
        stage.list().visualItemRect(stage.list().item(40))))
        << "the runner that was added is brought into view";
}

}  // namespace
}  // namespace valdorn
