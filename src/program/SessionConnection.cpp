#include "program/SessionConnection.h"

#include <chrono>
#include <cstdio>

#include "platform/posix/SessionBusSocket.h"

namespace valdorn::SessionConnection {

namespace {

// A bus answers within a millisecond or two. The next look comes soon.
constexpr std::chrono::seconds patience{1};

// At login, when all computers are busy, there is no next look.
constexpr std::chrono::seconds patienceAtStart{5};

}  // namespace

QDBusConnection open(const std::string& address, const QString& name) {
    if (SessionBusSocket::isSilent(address, patience))
        return QDBusConnection(name);
    if (address.empty())
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    return QDBusConnection::connectToBus(QString::fromStdString(address), name);
}

void keepQtFromSilentBus(const std::string& address) {
    if (!SessionBusSocket::isSilent(address, patienceAtStart))
        return;
    std::fputs("valdorn: The session bus does not answer, and is done without\n", stderr);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

}  // namespace valdorn::SessionConnection
