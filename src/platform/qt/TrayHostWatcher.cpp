#include "platform/qt/TrayHostWatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

#include "platform/qt/BusCalls.h"

namespace valdorn {

namespace {

QDBusMessage question() {
    return BusCalls::toItemWatcher("org.freedesktop.DBus.Properties", "Get")
           << BusCalls::itemWatcher() << QStringLiteral("IsStatusNotifierHostRegistered");
}

}  // namespace

TrayHostWatcher::TrayHostWatcher(QDBusConnection bus, std::function<void()> onChange)
    : bus_(std::move(bus)), onChange_(std::move(onChange)) {
    if (!bus_.isConnected())
        return;
    owners_.setConnection(bus_);
    owners_.addWatchedService(BusCalls::itemWatcher());
    connect(
        &owners_, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { onOwnerChanged(owner); });
    // From any sender: naming one would make Qt wait for the bus to resolve it.
    for (const char* const signal :
         {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus_.connect(QString(), BusCalls::itemWatcherPath(), BusCalls::itemWatcher(),
                     QLatin1String(signal), this, SLOT(ask()));
    }
    ask();
}

void TrayHostWatcher::onOwnerChanged(const QString& newOwner) {
    if (!newOwner.isEmpty())
        return ask();
    ++questions_;
    setPresent(false);
}

void TrayHostWatcher::ask() {
    auto* const call = new QDBusPendingCallWatcher(bus_.asyncCall(question()), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, number = ++questions_] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (number == questions_)
            setPresent(reply.isValid() && reply.value().variant().toBool());
    });
}

void TrayHostWatcher::setPresent(bool present) {
    if (std::exchange(present_, present) != present)
        onChange_();
}

}  // namespace valdorn
