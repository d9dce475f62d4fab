#include <QDBusMessage>
#include <QDBusPendingCall>
#include <atomic>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "platform/qt/InstanceBus.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

constexpr char key[] = "0123456789abcdef";

class InstanceBusTest : public testing::Test {
protected:
    InstanceBus::OnActivate record() {
        return [this](const std::string& token) { tokens.push_back(token); };
    }

    // What a second start is told, while this thread plays the running instance.
    bool activate(const std::string& token, const std::string& ofKey = key) {
        std::atomic<bool> done = false;
        bool reached = false;
        std::thread second([&, connection = bus.connect()] {
            reached = InstanceBus::activateRunningInstance(connection, ofKey, token, 20s);
            done = true;
        });
        EXPECT_TRUE(runUntil([&done] { return done.load(); }, 30s));
        second.join();
        return reached;
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QStringLiteral("org.valdorn.valdorn.i") + QLatin1String(key),
            QStringLiteral("/org/valdorn/valdorn"), QStringLiteral("org.freedesktop.Application"),
            method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.connect().asyncCall(message);
        EXPECT_TRUE(runUntil([&pending] { return pending.isFinished(); }));
        return pending.reply();
    }

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
    std::atomic<bool> done = false;
    bool reached = false;
    std::thread second([&, connection = bus.connect()] {
        reached = InstanceBus::activateRunningInstance(connection, key, "early", 20s);
        done = true;
    });
    std::optional<InstanceBus> instance;
    EXPECT_TRUE(runUntil([&] {
        if (!instance)
            instance.emplace(bus.connect(), key, record());
        return done.load();
    }));
    second.join();
    EXPECT_TRUE(reached);
    EXPECT_EQ(tokens, std::vector<std::string>{"early"});
}

TEST_F(InstanceBusTest, PatienceEndsWhenNobodyOwnsTheName) {
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "", 120ms));
}

TEST_F(InstanceBusTest, InstanceOfAnotherHomeIsNotReached) {
    const InstanceBus instance(bus.connect(), "fedcba9876543210", record());
    EXPECT_TRUE(activate("mine", "fedcba9876543210"));
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "other", 1ms));
    EXPECT_EQ(tokens, std::vector<std::string>{"mine"});
}

TEST_F(InstanceBusTest, NameIsGivenBackAtTheEnd) {
    {
        const InstanceBus instance(bus.connect(), key, record());
        EXPECT_TRUE(activate(""));
    }
    EXPECT_FALSE(InstanceBus::activateRunningInstance(bus.connect(), key, "", 1ms));
    const InstanceBus next(bus.connect(), key, record());
    EXPECT_TRUE(activate("next"));
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
    const QVariantList arguments{QStringLiteral("dance"), QVariantList(), QVariantMap()};
    const QDBusMessage answer = call(QStringLiteral("ActivateAction"), arguments);
    EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
}

TEST(InstanceBusWithoutBusTest, NothingIsOwnedAndNothingIsReached) {
    const QDBusConnection none(QStringLiteral("no such bus"));
    const InstanceBus instance(none, key, [](const std::string&) {});
    EXPECT_FALSE(InstanceBus::activateRunningInstance(none, key, "token", 20s));
}

}  // namespace
}  // namespace valdorn
