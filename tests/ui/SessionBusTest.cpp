#include <QDBusConnectionInterface>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/qt/SessionBus.h"
#include "support/ManualBackgroundQueue.h"
#include "support/VirtualMainQueue.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class SessionBusTest : public testing::Test {
protected:
    SessionBusTest() { begin(SessionBus::WithoutBus::settle); }

    void begin(SessionBus::WithoutBus withoutBus) {
        session.emplace(queue, background, connector(), callbacks(), withoutBus);
    }

    SessionBus::Connect connector() {
        return [this](const QString& name) {
            ++attempts;
            auto connection = bus.connect(name);
            whileConnecting();
            return connection;
        };
    }

    SessionBus::Callbacks callbacks() {
        return {[this](const QDBusConnection& connection) {
                    log += "up ";
                    connected = connection;
                },
                [this] { log += "down "; }};
    }

    void loseBus() {
        bus.end();
        EXPECT_TRUE(runUntil([this] { return log.ends_with("down "); }));
    }

    // A period goes by, and what falls due in it is done.
    void passPeriod() {
        queue.advance(SessionBus::period);
        background.runAll();
        queue.runPosted();
    }

    bool isAsleep() const { return queue.pending() == 0 && background.count() == 0; }

    PrivateBus bus;
    VirtualMainQueue queue;
    ManualBackgroundQueue background;
    int attempts = 0;
    std::function<void()> whileConnecting = [] {};
    std::string log;
    QDBusConnection connected{QStringLiteral("none yet")};
    std::optional<SessionBus> session;
};

TEST_F(SessionBusTest, IsUpAtOnceAndSleepsWhileTheBusIsThere) {
    EXPECT_EQ(log, "");
    session->start();
    EXPECT_EQ(log, "up ");
    EXPECT_TRUE(connected.isConnected());
    runReadyEvents();
    EXPECT_TRUE(isAsleep());
}

TEST_F(SessionBusTest, ComesBackWithTheBusAndSleepsAgain) {
    session->start();
    for (const char* const expected : {"up down up ", "up down up down up "}) {
        loseBus();
        bus.begin();
        passPeriod();
        EXPECT_EQ(log, expected);
        EXPECT_TRUE(connected.isConnected());
        EXPECT_TRUE(connected.interface()->registerService(QStringLiteral("org.valdorn.test")));
        EXPECT_TRUE(isAsleep());
    }
}

TEST_F(SessionBusTest, LooksOnceInAPeriodAndInTheBackground) {
    session->start();
    loseBus();
    queue.advance(SessionBus::period - 1ms);
    EXPECT_EQ(background.count(), 0U);
    queue.advance(1ms);
    EXPECT_EQ(background.count(), 1U);
    EXPECT_EQ(attempts, 1);
    background.runAll();
    queue.runPosted();
    for (int period = 0; period < 9; ++period)
        passPeriod();
    EXPECT_EQ(attempts, 11);
    EXPECT_EQ(log, "up down ");
}

TEST_F(SessionBusTest, LooksForAKnownAddressFromTheBeginning) {
    begin(SessionBus::WithoutBus::lookAgain);
    bus.end();
    session->start();
    passPeriod();
    EXPECT_EQ(log, "");
    bus.begin();
    passPeriod();
    EXPECT_EQ(log, "up ");
}

TEST_F(SessionBusTest, DoesNotLookForABusThatNobodyHasHeardOf) {
    bus.end();
    session->start();
    EXPECT_TRUE(isAsleep());
    EXPECT_EQ(attempts, 1);
}

TEST_F(SessionBusTest, BusThatIsFoundTooLateForUsIsLeftAgain) {
    session->start();
    loseBus();
    bus.begin();
    queue.advance(SessionBus::period);
    session.reset();
    background.runAll();
    queue.runPosted();
    EXPECT_EQ(log, "up down ");
    EXPECT_FALSE(QDBusConnection(QStringLiteral("valdorn-session")).isConnected());
}

// Whoever drops a connection that Qt is just handing over has it freed while it is in use.
TEST_F(SessionBusTest, LookThatIsUnderWayAtTheEndIsLeftAlone) {
    session->start();
    loseBus();
    bus.begin();
    queue.advance(SessionBus::period);
    whileConnecting = [this] { session.reset(); };
    background.runAll();
    EXPECT_TRUE(SessionBus::connection().isConnected());
    queue.runPosted();
    EXPECT_FALSE(SessionBus::connection().isConnected());
}

TEST_F(SessionBusTest, BusThatIsLostBeforeItIsHeardOfIsLookedForAgain) {
    session->start();
    loseBus();
    bus.begin();
    queue.advance(SessionBus::period);
    background.runAll();
    bus.end();
    EXPECT_TRUE(
        runUntil([] { return !QDBusConnection(QStringLiteral("valdorn-session")).isConnected(); }));
    queue.runPosted();
    EXPECT_EQ(log, "up down ");
    bus.begin();
    passPeriod();
    EXPECT_EQ(log, "up down up ");
}

// The connection may say so only after it was asked, or twice.
TEST_F(SessionBusTest, LossThatIsKnownAlreadyIsNotToldAgain) {
    begin(SessionBus::WithoutBus::lookAgain);
    const auto hearOfLoss = [this] { QMetaObject::invokeMethod(&*session, "onDisconnected"); };
    bus.end();
    session->start();
    hearOfLoss();
    EXPECT_EQ(log, "");
    EXPECT_EQ(queue.pending(), 1U);
    bus.begin();
    passPeriod();
    loseBus();
    hearOfLoss();
    EXPECT_EQ(log, "up down ");
    EXPECT_EQ(queue.pending(), 1U);
}

}  // namespace
}  // namespace valdorn
