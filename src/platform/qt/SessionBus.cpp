#include "platform/qt/SessionBus.h"

#include <utility>

namespace valdorn {

namespace {

QString connectionName() {
    return QStringLiteral("valdorn-session");
}

}  // namespace

SessionBus::SessionBus(MainQueue& mainQueue, BackgroundQueue& backgroundQueue, Connect connect,
                       Callbacks callbacks, WithoutBus withoutBus)
    : mainQueue_(mainQueue),
      backgroundQueue_(backgroundQueue),
      connect_(std::move(connect)),
      callbacks_(std::move(callbacks)),
      withoutBus_(withoutBus),
      self_(std::make_shared<SessionBus*>(this)) {}

SessionBus::~SessionBus() {
    if (!isLooking_)
        QDBusConnection::disconnectFromBus(connectionName());
}

QDBusConnection SessionBus::connection() {
    return QDBusConnection(connectionName());
}

void SessionBus::start() {
    onLooked(connect_(connectionName()));
}

void SessionBus::look() {
    isLooking_ = true;
    backgroundQueue_.run(
        [&queue = mainQueue_, connect = connect_, weak = std::weak_ptr<SessionBus*>(self_)] {
            QDBusConnection bus = connect(connectionName());
            queue.post([weak, bus] {
                if (const auto self = weak.lock())
                    (*self)->onLooked(bus);
                else
                    QDBusConnection::disconnectFromBus(connectionName());
            });
        });
}

void SessionBus::onLooked(QDBusConnection bus) {
    isLooking_ = false;
    // The connection itself says when it has lost the bus.
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SLOT(onDisconnected()));
    // Asked afterwards: what it said before has gone unheard.
    if (!bus.isConnected())
        return lookLater();
    state_ = State::up;
    callbacks_.onUp(bus);
}

void SessionBus::onDisconnected() {
    if (state_ != State::up)
        return;
    state_ = State::down;
    callbacks_.onDown();
    lookLater();
}

void SessionBus::lookLater() {
    QDBusConnection::disconnectFromBus(connectionName());
    if (state_ != State::neverUp || withoutBus_ == WithoutBus::lookAgain)
        nextLook_ = mainQueue_.after(period, [this] { look(); });
}

}  // namespace valdorn
