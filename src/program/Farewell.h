#pragma once

namespace valdorn {

// For when the program has done all of its own, and only Qt is left to be taken down: gives it four
// seconds, after which the process ends with `status`. Main thread, with Qt up.
//
// Qt (6.4) waits without end for an X server that stands still, such as one at the other end of a
// broken line. Its Wayland client does once in some hundred ends, for a thread of its own that waits
// for another one to read from the compositor. The lock of the instance would stay as long; a second
// start waits five seconds for it.
void boundFarewell(int status);

}  // namespace valdorn
