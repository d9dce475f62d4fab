#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <atomic>
#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/qt/InstanceBus.h"
#include "ui/BusCaller.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

constexpr char key[] = "0123456789abcdef";

class InstanceBusTest : public testing::Test {
protected:
    InstanceBus::Requests record() {
        const auto called = [this](const std::string& action) {
            return [this, action](const std::string& token) { tokens.push_back(action + token); };
        };
        return {called(""), {{"sing", called("sing:")}, {"fly", called("fly:")}}};
    }

    // What a second start is told, while this thread plays the running instance.
    bool activate(const std::string& token, const std::string& ofKey = key) {
        std::atomic<bool> done = false;
        bool reached = false;
        std::thread second([&, connection = bus.connect()] {
            reached = InstanceBus::activateRunningInstance(connection, ofKey, token, 20s,
                                                           [] { return false; });
            done = true;
        });
        EXPECT_TRUE(runUntil([&done] { return done.load(); }, 30s));
        second.join();
        return reached;
    }

    // What a second start is told that asks before there is an instance.
    bool isReachedEarly(const std::function<bool(const QDBusConnection&)>& ask) {
        std::atomic<bool> done = false;
        bool reached = false;
        std::thread second([&, connection = bus.connect()] {
            reached = ask(connection);
            done = true;
        });
        std::optional<InstanceBus> instance;
        EXPECT_TRUE(runUntil([&] {
            if (!instance)
                instance.emplace(bus.connect(), key, record());
            return done.load();
        }));
        second.join();
        return reached;
    }

    static QDBusMessage request(const QString& method, const QString& name = nameOf(key)) {
        return QDBusMessage::createMethodCall(
            name, path, QStringLiteral("org.freedesktop.Application"), method);
    }

    static QString nameOf(const std::string& home) {
        return plainName + QStringLiteral(".i") + QString::fromStdString(home);
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments,
                      const QString& name = nameOf(key)) {
        QDBusMessage message = request(method, name);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.connect().asyncCall(message);
        EXPECT_TRUE(runUntil([&pending] { return pending.isFinished(); }));
        return pending.reply();
    }

    QDBusMessage act(const char* action, const QVariantMap& data = {}) {
        return call(QStringLiteral("ActivateAction"), {QLatin1String(action), QVariantList(), data},
                    plainName);
    }

    static inline const QString plainName = QStringLiteral("org.valdorn.valdorn");
    static inline const QString path = QStringLiteral("/org/valdorn/valdorn");
    PrivateBus bus;
    std::vector<std::string> tokens;
};

TEST_F(InstanceBusTest, SecondStartReachesTheRunningInstanceWithItsToken) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate("token-1"));
    EXPECT_TRUE(activate(""));
    EXPECT_EQ(tokens, (std::vector<std::string>{"token-1", ""}));
}

TEST_F(InstanceBusTest, SecondStartWaitsForAnInstanceThatIsStillStarting) {
    EXPECT_TRUE(isReachedEarly([](const QDBusConnection& connection) {
        return InstanceBus::activateRunningInstance(connection, key, "early", 20s,
                                                    [] { return false; });
    }));
    EXPECT_EQ(tokens, std::vector<std::string>{"early"});
}

TEST_F(InstanceBusTest, PatienceEndsWhenNobodyOwnsTheName) {
    EXPECT_FALSE(
        InstanceBus::activateRunningInstance(bus.connect(), key, "", 120ms, [] { return false; }));
}

TEST_F(InstanceBusTest, WaitingEndsWithTheInstanceThatIsWaitedFor) {
    int asked = 0;
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "", 20s,
                                                      [&asked] { return ++asked == 3; }));
    EXPECT_EQ(asked, 3);
}

TEST_F(InstanceBusTest, NameWithNothingBehindItIsAskedAgain) {
    QDBusConnection ending = bus.connect();
    ASSERT_TRUE(ending.registerService(nameOf(key)));
    int asked = 0;
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "", 20s,
                                                      [&asked] { return ++asked == 2; }));
    EXPECT_EQ(asked, 2);
}

TEST_F(InstanceBusTest, RefusalIsAnAnswerAndEndsTheWaiting) {
    QDBusConnection refusing = bus.connect();
    QObject deaf;
    ASSERT_TRUE(refusing.registerObject(path, &deaf, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(refusing.registerService(nameOf(key)));
    std::atomic<int> asked = 0;
    std::atomic<bool> done = false;
    bool reached = true;
    std::thread second([&, connection = bus.connect()] {
        reached = InstanceBus::activateRunningInstance(connection, key, "", 20s,
                                                       [&asked] { return ++asked == 2; });
        done = true;
    });
    EXPECT_TRUE(runUntil([&done] { return done.load(); }));
    second.join();
    EXPECT_FALSE(reached);
    EXPECT_EQ(asked, 0);
}

TEST_F(InstanceBusTest, InstanceOfAnotherHomeIsNotReached) {
    const InstanceBus instance(bus.connect(), "fedcba9876543210", record());
    EXPECT_TRUE(activate("mine", "fedcba9876543210"));
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "other", 1ms,
                                                      [] { return false; }));
    EXPECT_EQ(tokens, std::vector<std::string>{"mine"});
}

TEST_F(InstanceBusTest, NameIsGivenBackAtTheEnd) {
    {
        const InstanceBus instance(bus.connect(), key, record());
        EXPECT_TRUE(activate(""));
    }
    EXPECT_FALSE(
        InstanceBus::activateRunningInstance(bus.connect(), key, "", 1ms, [] { return false; }));
    const InstanceBus next(bus.connect(), key, record());
    EXPECT_TRUE(activate("next"));
}

TEST_F(InstanceBusTest, WhoAsksOneThatHasLeftIsToldThatItIsGone) {
    InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate("first"));
    const QDBusConnection asking = bus.connect();
    QList<QDBusPendingCall> calls;
    for (const char* const method : {"Activate", "Open", "ActivateAction"}) {
        QDBusMessage message = request(QLatin1String(method));
        if (method == std::string("Open"))
            message << QStringList();
        if (method == std::string("ActivateAction"))
            message << QStringLiteral("sing") << QVariantList();
        calls.append(asking.asyncCall(message << QVariantMap()));
    }
    instance.leave();
    for (const QDBusPendingCall& call : calls) {
        EXPECT_TRUE(runUntil([&call] { return call.isFinished(); }));
        EXPECT_TRUE(call.isError());
    }
    EXPECT_FALSE(
        InstanceBus::activateRunningInstance(bus.connect(), key, "", 1ms, [] { return false; }));
    EXPECT_EQ(tokens, std::vector<std::string>{"first"});
}

// The first request makes it leave: the second is there by then, and comes too late.
TEST_F(InstanceBusTest, MayLeaveWhileItServesARequest) {
    std::optional<InstanceBus> instance;
    InstanceBus::Requests requests = record();
    requests.actions["fly"] = [this, &instance](const std::string&) {
        tokens.push_back("fly");
        instance->leave();
    };
    instance.emplace(bus.connect(), key, requests);
    EXPECT_TRUE(activate(""));
    const QDBusConnection asking = bus.connect();
    const auto ask = [&asking](const char* action) {
        return asking.asyncCall(request(QStringLiteral("ActivateAction"))
                                << QLatin1String(action) << QVariantList() << QVariantMap());
    };
    const QDBusPendingCall first = ask("fly");
    const QDBusPendingCall second = ask("sing");
    EXPECT_TRUE(runUntil([&] { return first.isFinished() && second.isFinished(); }));
    EXPECT_FALSE(first.isError());
    EXPECT_EQ(second.error().type(), QDBusError::UnknownObject);
    EXPECT_EQ(tokens, (std::vector<std::string>{"", "fly"}));
}

TEST_F(InstanceBusTest, InstanceThatIsOnlyWaitedForIsAskedForNothing) {
    EXPECT_TRUE(isReachedEarly([](const QDBusConnection& connection) {
        return InstanceBus::awaitRunningInstance(connection, key, 20s, [] { return false; });
    }));
    EXPECT_EQ(tokens, std::vector<std::string>{});
    EXPECT_FALSE(InstanceBus::awaitRunningInstance(bus.connect(), "fedcba9876543210", 1ms,
                                                   [] { return false; }));
}

TEST_F(InstanceBusTest, StartupIdStandsInForTheToken) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    const QVariantMap data{{QStringLiteral("desktop-startup-id"), QStringLiteral("x11")}};
    EXPECT_EQ(call(QStringLiteral("Activate"), {data}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens.back(), "x11");
}

TEST_F(InstanceBusTest, OpeningShowsTheProgram) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    const QVariantMap data{{QStringLiteral("activation-token"), QStringLiteral("open")}};
    const QStringList uris{QStringLiteral("file:///x")};
    EXPECT_EQ(call(QStringLiteral("Open"), {uris, data}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens.back(), "open");
}

TEST_F(InstanceBusTest, UnknownActionIsRefused) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    EXPECT_EQ(act("dance").errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    EXPECT_EQ(tokens, std::vector<std::string>{""});
}

// What a program of the same user may say besides. None of it is an accident that the program could
// not get over.
TEST_F(InstanceBusTest, WhatIsNoRequestIsRefusedAndChangesNothing) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    const QVariantMap data{{QStringLiteral("activation-token"), QStringLiteral("sly")}};
    const QString sing = QStringLiteral("sing");
    const std::pair<const char*, QVariantList> calls[] = {
        {"Quit", {}},
        {"Activated", {data}},
        {"activate", {data}},
        {"Activate", {}},
        {"Activate", {1}},
        {"Activate", {sing}},
        {"Activate", {QVariant(QVariantList{data})}},
        {"Open", {data}},
        {"Open", {sing, data}},
        {"ActivateAction", {data}},
        {"ActivateAction", {sing}},
        {"ActivateAction", {sing, data}},
        {"ActivateAction", {7, QVariantList(), data}},
        {"ActivateAction", {QStringList{sing}, QVariantList(), data}},
        {"refuseWhenGone", {}},
        {"leave", {}},
        {"deleteLater", {}},
        {"destroyed", {}},
        {"setObjectName", {sing}},
    };
    for (const auto& [method, arguments] : calls) {
        EXPECT_EQ(call(QLatin1String(method), arguments).type(), QDBusMessage::ErrorMessage)
            << method << " with " << arguments.size();
    }
    EXPECT_EQ(tokens, std::vector<std::string>{""});
    EXPECT_TRUE(activate("still there"));
}

TEST_F(InstanceBusTest, OtherInterfacesHaveNothingToOffer) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    BusCaller properties(bus, nameOf(key), path, QStringLiteral("org.freedesktop.Application"));
    EXPECT_EQ(properties.properties(), QVariantMap());
    EXPECT_EQ(properties.setProperty(QStringLiteral("objectName"), 1).type(),
              QDBusMessage::ErrorMessage);
    for (const char* const interface : {"org.qtproject.Qt.QObject", "org.valdorn.valdorn"}) {
        BusCaller other(bus, nameOf(key), path, QLatin1String(interface));
        for (const char* const method : {"Activate", "deleteLater"}) {
            EXPECT_EQ(other.call(method, {QVariantMap()}).type(), QDBusMessage::ErrorMessage)
                << interface << " " << method;
        }
    }
    EXPECT_EQ(tokens, std::vector<std::string>{""});
}

TEST_F(InstanceBusTest, HugeRequestsAreNothingSpecial) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    const QString huge(8'000'000, QLatin1Char('x'));
    EXPECT_EQ(act(huge.toUtf8().constData()).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    EXPECT_EQ(tokens, std::vector<std::string>{""});
    // What comes along and is not asked for is let go of.
    EXPECT_EQ(act("sing", {{QStringLiteral("more"), huge}}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens.back(), "sing:");
}

TEST_F(InstanceBusTest, TokenThatIsNoTextIsNone) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    for (const QVariant& odd :
         {QVariant(QVariantList{1, 2}), QVariant(QVariantMap()), QVariant(QByteArray()),
          QVariant(QStringList{QString(), QString()})})
        EXPECT_EQ(act("sing", {{QStringLiteral("activation-token"), odd}}).type(),
                  QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens, (std::vector<std::string>{"", "sing:", "sing:", "sing:", "sing:"}));
}

TEST_F(InstanceBusTest, ActionReachesTheInstanceByThePlainNameWithItsToken) {
    const InstanceBus instance(bus.connect(), key, record());
    EXPECT_TRUE(activate(""));
    const QVariantMap data{{QStringLiteral("activation-token"), QStringLiteral("click")}};
    EXPECT_EQ(act("fly", data).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(act("sing").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens, (std::vector<std::string>{"", "fly:click", "sing:"}));
}

TEST_F(InstanceBusTest, ActionsGoToTheFirstInstanceAndThenToTheNext) {
    std::optional<InstanceBus> first(std::in_place, bus.connect(), key, record());
    EXPECT_TRUE(activate("first"));
    std::vector<std::string> ofSecond;
    const auto record = [&ofSecond](const std::string& token) { ofSecond.push_back(token); };
    const InstanceBus second(bus.connect(), "fedcba9876543210",
                             InstanceBus::Requests{record, {{"fly", record}}});
    EXPECT_TRUE(activate("second", "fedcba9876543210"));
    EXPECT_EQ(act("fly").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens, (std::vector<std::string>{"first", "fly:"}));
    EXPECT_EQ(ofSecond, std::vector<std::string>{"second"});
    first.reset();
    EXPECT_EQ(act("fly").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(ofSecond, (std::vector<std::string>{"second", ""}));
}

TEST(InstanceBusWithoutBusTest, NothingIsOwnedAndNothingIsReached) {
    const QDBusConnection none(QStringLiteral("no such bus"));
    const InstanceBus instance(none, key, {[](const std::string&) {}});
    EXPECT_FALSE(
        InstanceBus::activateRunningInstance(none, key, "token", 20s, [] { return false; }));
}

}  // namespace
}  // namespace valdorn
