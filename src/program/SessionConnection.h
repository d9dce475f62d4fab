#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <optional>
#include <string>

namespace valdorn {

// Ways onto the session bus that do not wait without end for one that is silent.
namespace SessionConnection {

// Any thread. A connection of that name to the bus at `address` (see SessionBusSocket; empty:
// wherever libdbus finds one). Not connected where there is none, or where it has stayed silent for
// a second.
QDBusConnection open(const std::string& address, const QString& name);

}  // namespace SessionConnection

// Where the bus has stayed silent for some seconds, keeps Qt from it for the life of the process:
// for its own purposes, such as screen readers, Qt connects without asking us, and would never come
// back. Says so on standard error. Stands around the making of the application object; main thread,
// before there is a second one.
class SilentBusGuard {
public:
    explicit SilentBusGuard(const std::string& address);
    // The application object is there now: Qt looks for the bus in vain, once and for all, and the
    // environment is again as it was, for the programs that we open.
    ~SilentBusGuard();
    SilentBusGuard(const SilentBusGuard&) = delete;
    SilentBusGuard& operator=(const SilentBusGuard&) = delete;

private:
    bool isNeeded_;
    std::optional<QByteArray> before_;  // what the environment said, if it said anything
};

}  // namespace valdorn
