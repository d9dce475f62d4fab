#include "ui/PrivateBus.h"

#include <QUuid>

#include <gtest/gtest.h>

namespace valdorn {

PrivateBus::PrivateBus() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--print-address"),
                   QStringLiteral("--nofork"), QStringLiteral("--nopidfile")});
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead(20'000)) {
    }
    address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    EXPECT_FALSE(address_.isEmpty()) << "dbus-daemon does not start";
}

PrivateBus::~PrivateBus() {
    for (const QString& name : connections_)
        QDBusConnection::disconnectFromBus(name);
    daemon_.terminate();
    EXPECT_TRUE(daemon_.waitForFinished());
}

QDBusConnection PrivateBus::connect() {
    connections_.append(QUuid::createUuid().toString());
    return QDBusConnection::connectToBus(address_, connections_.back());
}

void PrivateBus::disconnect(const QDBusConnection& connection) {
    connections_.removeOne(connection.name());
    QDBusConnection::disconnectFromBus(connection.name());
}

}  // namespace valdorn
