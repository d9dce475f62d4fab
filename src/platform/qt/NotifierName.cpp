#include "platform/qt/NotifierName.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

#include "platform/qt/BusCalls.h"

namespace valdorn {

namespace {

QString newName() {
    static int count = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2")
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

}  // namespace

NotifierName::NotifierName(QDBusConnection bus) : bus_(std::move(bus)), own_(newName()) {
    if (!bus_.isConnected())
        return;
    constexpr uint doNotQueue = 4;
    constexpr uint isPrimaryOwner = 1;
    auto* const call = new QDBusPendingCallWatcher(
        bus_.asyncCall(BusCalls::toBus("RequestName") << own_ << doNotQueue), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<uint> reply = *call;
        onAnswer(reply.isValid() && reply.value() == isPrimaryOwner);
    });
}

NotifierName::~NotifierName() {
    if (bus_.isConnected())
        bus_.send(BusCalls::toBus("ReleaseName") << own_);
}

void NotifierName::onAnswer(bool isOurs) {
    known_ = isOurs ? own_ : bus_.baseService();
    Q_EMIT becameKnown();
}

}  // namespace valdorn
