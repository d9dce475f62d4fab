#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace valdorn {

// The session bus as a socket. libdbus, and Qt with it, waits without end for a bus that takes a
// connection and says nothing, as one may be that hangs or is about to end: this finds that out
// beforehand. Any thread.
namespace SessionBusSocket {

// Where the environment ("NAME=value" each) says that the bus is, in D-Bus's notation, or the usual
// place of the session. Empty where there is neither: libdbus has further ways of its own.
std::string address(const std::vector<std::string>& environment);

// True when whoever listens there takes connections and has not let us in after `patience`. False
// as well where nobody listens, and where the address names no UNIX socket that could be asked:
// there libdbus has its answer at once.
bool isSilent(const std::string& address, std::chrono::milliseconds patience);

}  // namespace SessionBusSocket

}  // namespace valdorn
