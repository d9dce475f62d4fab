#pragma once

namespace valdorn {

// For when the program has done all of its own, and only Qt is left to be taken down: gives it one
// second, after which the process ends with `status`. Main thread, with Qt up.
//
// Once in some hundred ends Qt's Wayland client (6.4) waits for ever for a thread of its own, which
// waits for another one to read from the compositor; the lock of the instance would stay as long.
// Elsewhere Qt needs no bound and gets none.
void boundFarewell(int status);

}  // namespace valdorn
