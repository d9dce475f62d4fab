#pragma once

#include <QDBusConnection>
#include <string>

namespace valdorn {

// Ways onto the session bus that do not wait without end for one that is silent. Any thread.
namespace SessionConnection {

// A connection of that name to the bus at `address` (see SessionBusSocket; empty: wherever libdbus
// finds one). Not connected where there is none, or where it has stayed silent for a second.
QDBusConnection open(const std::string& address, const QString& name);

// Before there is an application object: where the bus at `address` has stayed silent for some
// seconds, keeps Qt from it for the life of the process. For its own purposes, such as screen
// readers, Qt connects without asking us, and would never come back.
void keepQtFromSilentBus(const std::string& address);

}  // namespace SessionConnection

}  // namespace valdorn
