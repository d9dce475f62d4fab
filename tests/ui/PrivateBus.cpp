#include "ui/PrivateBus.h"

#include <QUuid>

#include <gtest/gtest.h>

namespace valdorn {

PrivateBus::PrivateBus() {
    begin();
}

PrivateBus::~PrivateBus() {
    for (const QString& name : connections_)
        QDBusConnection::disconnectFromBus(name);
    if (daemon_.state() != QProcess::NotRunning)
        end();
}

void PrivateBus::begin() {
    daemon_.start(
        QStringLiteral("dbus-daemon"),
        {QStringLiteral("--session"), QStringLiteral("--print-address"), QStringLiteral("--nofork"),
         QStringLiteral("--nopidfile"), QStringLiteral("--address=") + address_});
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead(20'000)) {
    }
    EXPECT_TRUE(QString::fromUtf8(daemon_.readLine()).startsWith(address_))
        << "dbus-daemon does not start";
}

void PrivateBus::end() {
    daemon_.kill();  // it may be too young to be asked
    EXPECT_TRUE(daemon_.waitForFinished());
}

QDBusConnection PrivateBus::connect() {
    return connect(QUuid::createUuid().toString());
}

QDBusConnection PrivateBus::connect(const QString& name) {
    if (!connections_.contains(name))
        connections_.append(name);
    return QDBusConnection::connectToBus(address_, name);
}

void PrivateBus::disconnect(const QDBusConnection& connection) {
    connections_.removeOne(connection.name());
    QDBusConnection::disconnectFromBus(connection.name());
}

}  // namespace valdorn
