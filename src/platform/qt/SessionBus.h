#pragma once

#include <QDBusConnection>
#include <QObject>
#include <chrono>
#include <functional>
#include <memory>

#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"

namespace valdorn {

// A connection to the session bus that comes back when the bus does, which QDBusConnection's own
// ones do not. While the bus is there it costs nothing; while it is away it is looked for once in
// a period. Main thread only, one object per process at a time.
class SessionBus : public QObject {
    Q_OBJECT

public:
    // Opens a connection of that name, connected or not. It may block, but not for long: the
    // background queue's end waits for it. Any thread.
    using Connect = std::function<QDBusConnection(const QString& name)>;

    struct Callbacks {
        std::function<void(const QDBusConnection&)> onUp;  // a new connection, and it is connected
        std::function<void()> onDown;  // that connection is dead: let go of whatever stands on it
    };

    // Soon enough for an icon within two seconds of a host on a bus that has come back.
    static constexpr std::chrono::seconds period{1};

    // What is done where there is no bus at the start. Without an address to look at, libdbus would
    // run a program each time, to find or start one.
    enum class WithoutBus { lookAgain, settle };

    // The queues outlive this. No callback is called before start().
    SessionBus(MainQueue& mainQueue, BackgroundQueue& backgroundQueue, Connect connect,
               Callbacks callbacks, WithoutBus withoutBus);
    // A look that is under way is left alone: Qt's connections of one name are not made and dropped
    // at the same time. What it opens is closed by the main queue's next turn, or else by the end of
    // the process.
    ~SessionBus() override;

    // Connects here and now, so that hosts and a second start find us as soon as they can; later
    // attempts are made in the background.
    void start();

    // The one that was told last to be up.
    static QDBusConnection connection();

private Q_SLOTS:
    void onDisconnected();

private:
    enum class State { neverUp, up, down };

    void look();
    void onLooked(QDBusConnection bus);
    void lookLater();

    MainQueue& mainQueue_;
    BackgroundQueue& backgroundQueue_;
    const Connect connect_;
    const Callbacks callbacks_;
    const WithoutBus withoutBus_;
    State state_ = State::neverUp;
    bool isLooking_ = false;  // the connection of our name is the background thread's
    ScheduledTask nextLook_;
    const std::shared_ptr<SessionBus*> self_;  // what a look that is under way asks whether we live
};

}  // namespace valdorn
