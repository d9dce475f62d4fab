#include "ui/NotifierHost.h"

#include <gtest/gtest.h>

namespace valdorn {

NotifierHost::NotifierHost(PrivateBus& bus) : bus_(bus) {
    connection_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                               QDBusConnection::ExportAllSlots);
    EXPECT_TRUE(connection_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));
}

NotifierHost::~NotifierHost() {
    bus_.disconnect(connection_);
}

}  // namespace valdorn
