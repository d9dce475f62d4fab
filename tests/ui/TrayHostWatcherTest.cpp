#include <optional>

#include <gtest/gtest.h>

#include "platform/qt/TrayHostWatcher.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"

namespace valdorn {
namespace {

// Plays the desktop's service that knows the hosts.
class NotifierService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    NotifierService(PrivateBus& bus, bool hasHostNow) : bus_(bus), hasHost_(hasHostNow) {
        connection_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                   QDBusConnection::ExportAllContents);
        EXPECT_TRUE(connection_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));
    }
    ~NotifierService() override { bus_.disconnect(connection_); }

    bool hasHost() {
        ++questions;
        return hasHost_;
    }

    void addHost() {
        hasHost_ = true;
        Q_EMIT StatusNotifierHostRegistered();
    }

    void removeHost() {
        hasHost_ = false;
        Q_EMIT StatusNotifierHostUnregistered();
    }

    int questions = 0;

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    PrivateBus& bus_;
    bool hasHost_;
    QDBusConnection connection_ = bus_.connect();
};

class TrayHostWatcherTest : public testing::Test {
protected:
    void watch() {
        watcher_.emplace(bus.connect(), [this] { seen.push_back(watcher_->isHostPresent()); });
    }

    // Every change so far was told once and alternates, as changes do.
    bool sees(const std::vector<bool>& expected) {
        return runUntil([&] { return seen.size() >= expected.size(); }) && seen == expected;
    }

    PrivateBus bus;
    std::vector<bool> seen;

private:
    std::optional<TrayHostWatcher> watcher_;
};

TEST_F(TrayHostWatcherTest, HostThatIsThereIsSeen) {
    const NotifierService service(bus, true);
    watch();
    EXPECT_TRUE(sees({true}));
}

TEST_F(TrayHostWatcherTest, ServiceWithoutAHostIsNoHost) {
    NotifierService service(bus, false);
    watch();
    EXPECT_TRUE(runUntil([&service] { return service.questions == 1; }));
    service.addHost();
    EXPECT_TRUE(sees({true}));
}

TEST_F(TrayHostWatcherTest, ServiceThatComesLateIsSeen) {
    watch();
    runReadyEvents();
    const NotifierService service(bus, true);
    EXPECT_TRUE(sees({true}));
}

TEST_F(TrayHostWatcherTest, HostThatLeavesIsMissed) {
    NotifierService service(bus, true);
    watch();
    EXPECT_TRUE(sees({true}));
    service.removeHost();
    EXPECT_TRUE(sees({true, false}));
}

TEST_F(TrayHostWatcherTest, ServiceThatRestartsIsSeenAgain) {
    std::optional<NotifierService> service(std::in_place, bus, true);
    watch();
    EXPECT_TRUE(sees({true}));
    service.reset();
    EXPECT_TRUE(sees({true, false}));
    service.emplace(bus, true);
    EXPECT_TRUE(sees({true, false, true}));
}

TEST_F(TrayHostWatcherTest, SecondHostChangesNothing) {
    NotifierService service(bus, true);
    watch();
    EXPECT_TRUE(sees({true}));
    service.addHost();
    EXPECT_TRUE(runUntil([&service] { return service.questions == 2; }));
    service.removeHost();
    EXPECT_TRUE(sees({true, false}));
}

TEST(TrayHostWatcherWithoutBusTest, HasNoHostAndNoError) {
    const TrayHostWatcher watcher(QDBusConnection(QStringLiteral("no such bus")),
                                  [] { ADD_FAILURE() << "nothing can change"; });
    runReadyEvents();
    EXPECT_FALSE(watcher.isHostPresent());
}

}  // namespace
}  // namespace valdorn

#include "TrayHostWatcherTest.moc"
