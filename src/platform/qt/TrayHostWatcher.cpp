#include "platform/qt/TrayHostWatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

namespace valdorn {

namespace {

QString watcherName() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

QString watcherPath() {
    return QStringLiteral("/StatusNotifierWatcher");
}

QDBusMessage question() {
    QDBusMessage call = QDBusMessage::createMethodCall(
        watcherName(), watcherPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    call << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    call.setAutoStartService(false);
    return call;
}

}  // namespace

TrayHostWatcher::TrayHostWatcher(QDBusConnection bus, std::function<void()> onChange)
    : bus_(std::move(bus)), onChange_(std::move(onChange)) {
    if (!bus_.isConnected())
        return;
    owners_.setConnection(bus_);
    owners_.addWatchedService(watcherName());
    connect(
        &owners_, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { onOwnerChanged(owner); });
    // From any sender: naming one would make Qt wait for the bus to resolve it.
    for (const char* const signal :
         {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus_.connect(QString(), watcherPath(), watcherName(), QLatin1String(signal), this,
                     SLOT(ask()));
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
