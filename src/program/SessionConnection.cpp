#include "program/SessionConnection.h"

#include <chrono>
#include <cstdio>

#include "platform/posix/SessionBusSocket.h"

namespace valdorn {

namespace {

// A bus answers within a millisecond or two. The next look comes soon.
constexpr std::chrono::seconds patience{1};

// A computer is busy at login, and this look is the only one that Qt gets.
constexpr std::chrono::seconds patienceAtStart{5};

constexpr char variable[] = "DBUS_SESSION_BUS_ADDRESS";

}  // namespace

QDBusConnection SessionConnection::open(const std::string& address, const QString& name) {
    if (SessionBusSocket::isSilent(address, patience))
        return QDBusConnection(name);
    if (address.empty())
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    return QDBusConnection::connectToBus(QString::fromStdString(address), name);
}

SilentBusGuard::SilentBusGuard(const std::string& address)
    : isNeeded_(SessionBusSocket::isSilent(address, patienceAtStart)) {
    if (!isNeeded_)
        return;
    std::fputs("valdorn: The session bus does not answer, and is done without until it does\n", stderr);
    if (qEnvironmentVariableIsSet(variable))
        before_ = qgetenv(variable);
    qputenv(variable, "disabled:");
}

SilentBusGuard::~SilentBusGuard() {
    if (!isNeeded_)
        return;
    QDBusConnection::sessionBus();
    if (before_)
        qputenv(variable, *before_);
    else
        qunsetenv(variable);
}

}  // namespace valdorn
