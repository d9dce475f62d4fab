#pragma once

#include <QDBusMessage>
#include <QString>

namespace valdorn {

// Calls that several objects of ours make on the session bus, and whom they go to. Any thread.
namespace BusCalls {

// To the bus itself.
inline QDBusMessage toBus(const char* method) {
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QLatin1String(method));
}

// Who knows the status bars and what they are to show; also the name of its interface.
inline QString itemWatcher() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

inline QString itemWatcherPath() {
    return QStringLiteral("/StatusNotifierWatcher");
}

// To that one, which is not started for it.
inline QDBusMessage toItemWatcher(const char* interface, const char* method) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        itemWatcher(), itemWatcherPath(), QLatin1String(interface), QLatin1String(method));
    call.setAutoStartService(false);
    return call;
}

}  // namespace BusCalls

}  // namespace valdorn
