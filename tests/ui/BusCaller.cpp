#include "ui/BusCaller.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusVariant>

#include <gtest/gtest.h>

#include "ui/EventLoop.h"

namespace valdorn {

BusCaller::BusCaller(PrivateBus& bus, const QString& service, const QString& path,
                     const QString& interface)
    : connection_(bus.connect()), service_(service), path_(path), interface_(interface) {
    // From any sender: naming one would make Qt wait for a bus that this thread serves.
    connection_.connect(QString(), path, interface, QString(), this, SLOT(onSignal(QDBusMessage)));
}

QDBusMessage BusCaller::callInterface(const QString& interface, const QString& method,
                                      const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service_, path_, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    const QDBusPendingCall pending = connection_.asyncCall(message);
    EXPECT_TRUE(runUntil([&pending] { return pending.isFinished(); })) << method.toStdString();
    return pending.reply();
}

QDBusMessage BusCaller::call(const char* method, const QVariantList& arguments) {
    return callInterface(interface_, QLatin1String(method), arguments);
}

QVariant BusCaller::property(const QString& name) {
    const QDBusMessage answer = callInterface(QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("Get"), {interface_, name});
    EXPECT_EQ(answer.arguments().size(), 1) << name.toStdString();
    return answer.arguments().value(0).value<QDBusVariant>().variant();
}

QVariantMap BusCaller::properties() {
    return qdbus_cast<QVariantMap>(callInterface(QStringLiteral("org.freedesktop.DBus.Properties"),
                                                 QStringLiteral("GetAll"), {interface_})
                                       .arguments()
                                       .value(0));
}

QDBusMessage BusCaller::setProperty(const QString& name, const QVariant& value) {
    return callInterface(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"),
                         {interface_, name, QVariant::fromValue(QDBusVariant(value))});
}

QString BusCaller::introspection() {
    return callInterface(QStringLiteral("org.freedesktop.DBus.Introspectable"),
                         QStringLiteral("Introspect"), {})
        .arguments()
        .value(0)
        .toString();
}

const std::vector<QDBusMessage>& BusCaller::signalsSoFar() {
    runReadyEvents();
    // The answer comes after what its sender has sent before.
    callInterface(QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"), {});
    runReadyEvents();
    return signals_;
}

int BusCaller::count(const QString& signal) {
    int number = 0;
    for (const QDBusMessage& message : signalsSoFar())
        number += message.member() == signal ? 1 : 0;
    return number;
}

}  // namespace valdorn
