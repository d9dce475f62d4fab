#include "program/SecondStart.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "platform/qt/InstanceBus.h"
#include "platform/qt/StartupNotification.h"
#include "program/SessionConnection.h"

namespace valdorn::SecondStart {

namespace {

// How long a second start waits for the first one to come onto the bus: it may have just begun.
constexpr std::chrono::seconds patience{5};

// How soon a bus that is away, or a lock that was held, is tried again.
constexpr std::chrono::milliseconds pause{50};

// A connection of its own: Qt's default one, begun beside an application object that goes, would be
// deaf for whatever comes after it.
bool ask(const Ground& ground, const InstancePlace& place, std::chrono::milliseconds patienceLeft,
         const std::function<bool()>& hasEnded) {
    const QString name = QStringLiteral("valdorn-second-start");
    const QDBusConnection bus = SessionConnection::open(ground, name);
    const bool isReached =
        ground.isStartedByBus
            ? InstanceBus::awaitRunningInstance(bus, place.key, patienceLeft, hasEnded)
            : InstanceBus::activateRunningInstance(bus, place.key, ground.activationToken,
                                                   patienceLeft, hasEnded);
    QDBusConnection::disconnectFromBus(name);
    return isReached;
}

}  // namespace

bool isHeldByAnother(const Lock& lock) {
    return !lock && lock.error().kind == LockRefusal::Kind::held;
}

bool activateRunningInstance(const Ground& ground, const InstancePlace& place, Lock& lock,
                             char* programName) {
    int argumentCount = 1;
    const QCoreApplication application(argumentCount, &programName);
    const auto tryToSucceed = [&place, &lock] {
        auto attempt = InstanceLock::acquire(place.lockPath());
        // Held as before, for all that a moment's shortage lets us know.
        if (attempt || !attempt.error().isShortage)
            lock = std::move(attempt);
        return !isHeldByAnother(lock);
    };
    const QDeadlineTimer end(patience);
    bool isReached = ask(ground, place, patience, tryToSucceed);
    while (!isReached && isHeldByAnother(lock) && !end.hasExpired()) {
        std::this_thread::sleep_for(pause);
        if (!tryToSucceed())
            isReached =
                ask(ground, place, std::chrono::milliseconds(end.remainingTime()), tryToSucceed);
    }
    if (isHeldByAnother(lock))
        StartupNotification::complete(ground.activationToken);
    return isReached;
}

}  // namespace valdorn::SecondStart
