#include "program/SessionConnection.h"

#include <chrono>
#include <cstdio>

#include "platform/Environment.h"
#include "platform/posix/SessionBusSocket.h"

namespace valdorn {

namespace {

using SessionBusSocket::State;

// A bus answers within a millisecond or two. The next look comes soon.
constexpr std::chrono::seconds patience{1};

// A computer is busy at login, and this look is the only one that Qt gets.
constexpr std::chrono::seconds patienceAtStart{5};

constexpr char variable[] = "DBUS_SESSION_BUS_ADDRESS";

}  // namespace

// Where libdbus knows the address, it is left to it: it has looked at the environment once in the
// life of the process, and an address that we name takes a way through Qt 6.4.2 that ends the
// process when the bus changes its mind between our question and its.
QDBusConnection SessionConnection::open(const Ground& ground, const QString& name) {
    const auto state = SessionBusSocket::ask(ground.sessionBus, patience);
    if (state == State::silent || state == State::refusing)
        return QDBusConnection(name);
    const bool isKnownToLibdbus =
        !ground.isQtKeptFromBus &&
        (ground.sessionBus.empty() || Environment::value(ground.host.environment(), variable));
    if (isKnownToLibdbus)
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    return QDBusConnection::connectToBus(QString::fromStdString(ground.sessionBus), name);
}

SilentBusGuard::SilentBusGuard(Ground& ground) {
    if (SessionBusSocket::ask(ground.sessionBus, patienceAtStart) != State::silent)
        return;
    ground.isQtKeptFromBus = true;
    std::fputs("valdorn: The session bus does not answer, and is done without until it does\n",
               stderr);
    noBus_.emplace(variable, "disabled:");
}

SilentBusGuard::~SilentBusGuard() {
    if (noBus_)
        QDBusConnection::sessionBus();  // while the variable is set, which it is until we are gone
}

}  // namespace valdorn
