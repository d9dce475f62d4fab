#include "program/SecondStart.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>

#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/InstanceBus.h"
#include "platform/qt/SessionBus.h"
#include "platform/qt/StartupNotification.h"

namespace valdorn::SecondStart {

namespace {

// How long a second start waits for the first one to come onto the bus: it may have just begun.
constexpr std::chrono::seconds patience{5};

// A connection of its own: Qt's default one, begun beside an application object that goes, would be
// deaf for whatever comes after it. A bus that takes it and does not answer holds Qt for ever, and
// with it the end of the process, unless that is cut short.
QDBusConnection connectToSession(const QString& name) {
    ThreadBackgroundQueue connecting;
    std::promise<QDBusConnection> promise;
    auto connection = promise.get_future();
    connecting.run([&] { promise.set_value(SessionBus::connectToSession(name)); });
    if (connection.wait_for(patience) == std::future_status::ready)
        return connection.get();
    complainOfUnreachable();
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

bool isHeldByAnother(const Lock& lock) {
    return !lock && lock.error().kind == LockRefusal::Kind::held;
}

void complainOfUnreachable() {
    std::fputs("valdorn: Valdorn runs already, and the session bus does not reach it\n", stderr);
}

bool activateRunningInstance(const InstancePlace& place, const std::string& activationToken,
                             Lock& lock, char* programName) {
    int argumentCount = 1;
    const QCoreApplication application(argumentCount, &programName);
    const auto tryToSucceed = [&place, &lock] {
        lock = InstanceLock::acquire(place.lockPath());
        return !isHeldByAnother(lock);
    };
    const QString connection = QStringLiteral("valdorn-second-start");
    const bool isReached = InstanceBus::activateRunningInstance(
        connectToSession(connection), place.key, activationToken, patience, tryToSucceed);
    QDBusConnection::disconnectFromBus(connection);
    if (isHeldByAnother(lock))
        StartupNotification::complete(activationToken);
    return isReached;
}

}  // namespace valdorn::SecondStart
