#include "ui/NotifierHost.h"

#include <QDBusConnectionInterface>

#include <gtest/gtest.h>

namespace valdorn {

NotifierHost::NotifierHost(PrivateBus& bus, bool isQueued) : bus_(bus) {
    connection_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                               QDBusConnection::ExportAllSlots);
    const auto reply = connection_.interface()->registerService(
        QStringLiteral("org.kde.StatusNotifierWatcher"),
        isQueued ? QDBusConnectionInterface::QueueService
                 : QDBusConnectionInterface::DontQueueService);
    EXPECT_EQ(reply.value(), isQueued ? QDBusConnectionInterface::ServiceQueued
                                      : QDBusConnectionInterface::ServiceRegistered);
}

NotifierHost::~NotifierHost() {
    bus_.disconnect(connection_);
}

}  // namespace valdorn
