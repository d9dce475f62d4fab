#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace valdorn {

// The session bus as a socket. libdbus, and Qt with it, waits without end for a bus that takes a
// connection and does not let us in, as one may be that hangs or is about to end; and where it says
// that it will not let us in, Qt 6.4.2 may end the process. This finds that out beforehand. Any
// thread.
namespace SessionBusSocket {

// Where the environment ("NAME=value" each) says that the bus is, in D-Bus's notation, else its
// usual place in the session's runtime folder, whether it is there yet or not. Empty where there is
// no such folder either: libdbus has further ways of its own.
std::string address(const std::vector<std::string>& environment);

enum class State {
    open,      // it let us in
    refusing,  // it did not, and said so: it has as many guests as it may have, say
    silent,    // it took the connection and has not let us in within the patience
    unknown,   // nobody listens there, or it is no UNIX socket: libdbus has its answer at once
};

// Goes in as a guest does, as far as the first words with the bus, and leaves again. Blocks for
// `patience` at most.
State ask(const std::string& address, std::chrono::milliseconds patience);

}  // namespace SessionBusSocket

}  // namespace valdorn
