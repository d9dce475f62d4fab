#include <QDBusArgument>
#include <QDBusVariant>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/qt/MenuOnBus.h"
#include "ui/BusCaller.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"

namespace valdorn {
namespace {

class MenuOnBusTest : public testing::Test {
protected:
    QVariantMap propertiesOf(int id) {
        const auto group = menu.call("GetGroupProperties", {ids({id}), QStringList()});
        const auto entries = qdbus_cast<QList<MenuEntryOnBus>>(group.arguments().value(0));
        EXPECT_EQ(entries.size(), 1) << id;
        return entries.value(0).properties;
    }

    MenuLayoutOnBus layout(int parent, int depth, const QStringList& names = {}) {
        const auto answer = menu.call("GetLayout", {parent, depth, names});
        EXPECT_EQ(answer.signature().toStdString(), "u(ia{sv}av)");
        EXPECT_EQ(answer.arguments().value(0).toUInt(), 1U);
        return qdbus_cast<MenuLayoutOnBus>(answer.arguments().value(1));
    }

    static MenuLayoutOnBus child(const MenuLayoutOnBus& layout, int index) {
        return qdbus_cast<MenuLayoutOnBus>(layout.children.value(index));
    }

    static QVariant ids(const QList<int>& list) { return QVariant::fromValue(list); }

    static QVariantList event(int id, const char* name) {
        return {id, QLatin1String(name), QVariant::fromValue(QDBusVariant(QString())), 0U};
    }

    static MenuEventOnBus click(int id) {
        return {id, QStringLiteral("clicked"), QDBusVariant(0), 0};
    }

    void expectRefused(const QDBusMessage& answer) {
        EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    }

    // What one signal says to be new, by the number of the entry.
    std::map<int, QVariantMap> updatesIn(const QDBusMessage& signal) {
        EXPECT_EQ(signal.signature().toStdString(), "a(ia{sv})a(ias)");
        EXPECT_TRUE(qdbus_cast<QList<MenuRemovalOnBus>>(signal.arguments().value(1)).isEmpty());
        std::map<int, QVariantMap> updates;
        for (const auto& entry : qdbus_cast<QList<MenuEntryOnBus>>(signal.arguments().value(0)))
            updates[entry.id] = entry.properties;
        return updates;
    }

    static inline const QString label = QStringLiteral("label");
    static inline const QString path = QStringLiteral("/MenuBar");
    PrivateBus bus;
    std::string activated;
    MenuModel model{
        {{"status", "R&D & Q_A__", false, false, false, 0, nullptr},
         {"build", "", false, true, false, 0, nullptr},
         {"", "", true, false, true, 0, nullptr},
         {"open", "Runner Status…", true, false, false, 's', [this] { activated += "open "; }},
         {"settings", "Settings…", true, false, false, ',', [this] { activated += "settings "; }},
         {"quit", "Quit", true, false, false, 0, [this] { object.reset(); }}}};
    QDBusConnection connection = bus.connect();
    std::optional<MenuOnBus> object{std::in_place, connection, path, model};
    BusCaller menu{bus, connection.baseService(), path, QStringLiteral("com.canonical.dbusmenu")};
};

TEST_F(MenuOnBusTest, DescribesItself) {
    EXPECT_EQ(menu.properties(),
              (QVariantMap{{QStringLiteral("Version"), 3U},
                           {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
                           {QStringLiteral("Status"), QStringLiteral("normal")},
                           {QStringLiteral("IconThemePath"), QStringList()}}));
    const QString xml = menu.introspection();
    for (const char* const part :
         {"\"com.canonical.dbusmenu\"", "\"GetLayout\"", "\"(ia{sv}av)\"", "\"EventGroup\"",
          "\"a(isvu)\"", "\"AboutToShowGroup\"", "\"ItemsPropertiesUpdated\"", "\"a(ias)\"",
          "\"LayoutUpdated\"", "\"ItemActivationRequested\""})
        EXPECT_TRUE(xml.contains(QLatin1String(part))) << part << xml.toStdString();
}

// But for its name as an object, which Qt lets everybody change and nobody reads.
TEST_F(MenuOnBusTest, NobodyElseChangesIt) {
    const QVariantMap before = menu.properties();
    for (const QString& name : before.keys()) {
        EXPECT_EQ(menu.setProperty(name, QStringLiteral("x")).type(), QDBusMessage::ErrorMessage)
            << name.toStdString();
    }
    for (const char* const method : {"deleteLater", "tell", "activateChosen", "LayoutUpdated"})
        EXPECT_EQ(menu.call(method).type(), QDBusMessage::ErrorMessage) << method;
    EXPECT_EQ(menu.properties(), before);
    EXPECT_EQ(activated, "");
}

TEST_F(MenuOnBusTest, LayoutIsTheMenuWithItsEntriesInOrder) {
    const MenuLayoutOnBus root = layout(0, -1);
    EXPECT_EQ(root.id, 0);
    EXPECT_EQ(root.properties,
              (QVariantMap{{QStringLiteral("children-display"), QStringLiteral("submenu")}}));
    ASSERT_EQ(root.children.size(), 6);
    for (int index = 0; index < 6; ++index) {
        EXPECT_EQ(child(root, index).id, index + 1);
        EXPECT_EQ(child(root, index).properties.keys(), propertiesOf(index + 1).keys());
    }
    EXPECT_EQ(layout(0, 1).children.size(), 6);
    EXPECT_TRUE(layout(0, 0).children.isEmpty());
}

TEST_F(MenuOnBusTest, LayoutOfAnEntryIsTheEntry) {
    const MenuLayoutOnBus entry = layout(4, -1);
    EXPECT_EQ(entry.id, 4);
    EXPECT_EQ(entry.properties.value(label).toString(), QStringLiteral("Runner Status…"));
    EXPECT_TRUE(entry.children.isEmpty());
}

TEST_F(MenuOnBusTest, OnlyThePropertiesThatAreAskedForAreTold) {
    const MenuLayoutOnBus root = layout(0, -1, {label});
    EXPECT_TRUE(root.properties.isEmpty());
    EXPECT_TRUE(child(root, 1).properties.isEmpty());
    EXPECT_EQ(child(root, 3).properties.keys(), QStringList{label});
    const auto group = menu.call("GetGroupProperties", {ids({4}), QStringList{label}});
    const auto entries = qdbus_cast<QList<MenuEntryOnBus>>(group.arguments().value(0));
    EXPECT_EQ(entries.value(0).properties.keys(), QStringList{label});
}

TEST_F(MenuOnBusTest, OnlyWhatIsNotUsualIsTold) {
    EXPECT_EQ(propertiesOf(1), (QVariantMap{{label, QStringLiteral("R&D & Q__A____")},
                                            {QStringLiteral("enabled"), false}}));
    EXPECT_EQ(propertiesOf(2), (QVariantMap{{QStringLiteral("enabled"), false},
                                            {QStringLiteral("visible"), false}}));
    EXPECT_EQ(propertiesOf(3),
              (QVariantMap{{QStringLiteral("type"), QStringLiteral("separator")}}));
    EXPECT_EQ(propertiesOf(6), (QVariantMap{{label, QStringLiteral("Quit")}}));
}

TEST_F(MenuOnBusTest, ShortcutsGoWithControl) {
    const auto shortcut = [this](int id) {
        return qdbus_cast<QList<QStringList>>(propertiesOf(id).value(QStringLiteral("shortcut")));
    };
    EXPECT_EQ(shortcut(4), (QList<QStringList>{{QStringLiteral("Control"), QStringLiteral("S")}}));
    EXPECT_EQ(shortcut(5), (QList<QStringList>{{QStringLiteral("Control"), QStringLiteral(",")}}));
}

TEST_F(MenuOnBusTest, GroupOfNoneIsAllAndLeavesOutStrangers) {
    const auto count = [this](const QList<int>& group) {
        const auto answer = menu.call("GetGroupProperties", {ids(group), QStringList()});
        EXPECT_EQ(answer.signature().toStdString(), "a(ia{sv})");
        return qdbus_cast<QList<MenuEntryOnBus>>(answer.arguments().value(0)).size();
    };
    EXPECT_EQ(count({}), 7);
    EXPECT_EQ(count({-1, 2, 7, 0}), 2);
    EXPECT_EQ(count({99}), 0);
}

TEST_F(MenuOnBusTest, SinglePropertyIsToldEvenIfItIsUsual) {
    const auto value = [this](int id, const char* name) {
        const QDBusMessage answer = menu.call("GetProperty", {id, QLatin1String(name)});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    };
    EXPECT_EQ(value(6, "label"), QVariant(QStringLiteral("Quit")));
    EXPECT_EQ(value(6, "enabled"), QVariant(true));
    EXPECT_EQ(value(1, "enabled"), QVariant(false));
    EXPECT_EQ(value(0, "children-display"), QVariant(QStringLiteral("submenu")));
    expectRefused(menu.call("GetProperty", {6, QStringLiteral("smell")}));
}

TEST_F(MenuOnBusTest, ClickActivatesTheEntry) {
    EXPECT_EQ(menu.call("Event", event(4, "clicked")).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(menu.call("Event", event(5, "clicked")).type(), QDBusMessage::ReplyMessage);
    runReadyEvents();
    EXPECT_EQ(activated, "open settings ");
}

TEST_F(MenuOnBusTest, OtherEventsAndClicksOnNothingDoNothing) {
    for (const char* const other : {"hovered", "opened", "closed", "x-smelt"})
        EXPECT_EQ(menu.call("Event", event(4, other)).type(), QDBusMessage::ReplyMessage);
    for (const int id : {0, 1, 3})
        EXPECT_EQ(menu.call("Event", event(id, "clicked")).type(), QDBusMessage::ReplyMessage);
    runReadyEvents();
    EXPECT_EQ(activated, "");
}

TEST_F(MenuOnBusTest, EntryThatNobodyHasIsRefused) {
    for (const int id : {-1, 7}) {
        expectRefused(menu.call("GetLayout", {id, -1, QStringList()}));
        expectRefused(menu.call("GetProperty", {id, label}));
        expectRefused(menu.call("Event", event(id, "clicked")));
        expectRefused(menu.call("AboutToShow", {id}));
    }
}

TEST_F(MenuOnBusTest, EventsOfAGroupNameTheStrangersAmongThem) {
    const auto send = [this](const QList<MenuEventOnBus>& events) {
        return menu.call("EventGroup", {QVariant::fromValue(events)});
    };
    const QDBusMessage answer = send({click(9), click(5), click(4), click(-3)});
    EXPECT_EQ(qdbus_cast<QList<int>>(answer.arguments().value(0)), (QList<int>{9, -3}));
    runReadyEvents();
    EXPECT_EQ(activated, "settings open ");
    expectRefused(send({click(9)}));
    EXPECT_EQ(send({}).type(), QDBusMessage::ReplyMessage);
}

TEST_F(MenuOnBusTest, LayoutIsNeverAnotherWhenItIsToBeShown) {
    const QDBusMessage answer = menu.call("AboutToShow", {0});
    EXPECT_EQ(answer.arguments(), QVariantList{false});
    const QDBusMessage group = menu.call("AboutToShowGroup", {ids({0, 8, 1})});
    EXPECT_TRUE(qdbus_cast<QList<int>>(group.arguments().value(0)).isEmpty());
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments().value(1)), QList<int>{8});
    expectRefused(menu.call("AboutToShowGroup", {ids({8})}));
}

TEST_F(MenuOnBusTest, MalformedCallsAreRefused) {
    for (const QDBusMessage& answer :
         {menu.call("Event", {QStringLiteral("4")}), menu.call("GetLayout", {}),
          menu.call("EventGroup", {1}), menu.call("Dance", {})})
        EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
}

TEST_F(MenuOnBusTest, ChangesOfATurnAreToldAtOnceAndAlone) {
    for (int change = 0; change < 100; ++change)
        model.setTitle("status", "Status_" + std::to_string(change));
    model.setTitle("build", "Building: x");
    model.setHidden("build", false);
    const auto seen = menu.signalsSoFar();
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(
        updatesIn(seen[0]),
        (std::map<int, QVariantMap>{
            {1, {{label, QStringLiteral("Status__99")}}},
            {2, {{label, QStringLiteral("Building: x")}, {QStringLiteral("visible"), true}}}}));
}

TEST_F(MenuOnBusTest, EachTurnTellsWhatIsNewInIt) {
    model.setHidden("build", false);
    menu.signalsSoFar();
    model.setHidden("build", true);
    const auto seen = menu.signalsSoFar();
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(updatesIn(seen[1]),
              (std::map<int, QVariantMap>{{2, {{QStringLiteral("visible"), false}}}}));
}

TEST_F(MenuOnBusTest, WhatIsAsBeforeAtTheEndOfATurnIsNotTold) {
    model.setTitle("status", "another");
    model.setTitle("status", "R&D & Q_A__");
    EXPECT_TRUE(menu.signalsSoFar().empty());
}

TEST_F(MenuOnBusTest, ChoiceThatEndsTheMenuIsAnswered) {
    EXPECT_EQ(menu.call("Event", event(6, "clicked")).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(runUntil([this] { return !object; }));
    EXPECT_EQ(menu.call("AboutToShow", {0}).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownObject"));
}

TEST_F(MenuOnBusTest, NothingIsToldOnceItIsGone) {
    model.setTitle("status", "another");
    object.reset();
    model.setTitle("status", "a third");
    EXPECT_TRUE(menu.signalsSoFar().empty());
}

}  // namespace
}  // namespace valdorn
