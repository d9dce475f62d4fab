#pragma once

namespace valdorn {

// Reads what the X server has answered to Xlib; nothing without X11. Main thread, with Qt up.
//
// Qt's X11 client (6.4) sets each window's title through Xlib, several times, and never asks Xlib
// for anything again, which until then remembers every request: 100 bytes for each time a window is
// shown.
void readXlibAnswers();

}  // namespace valdorn
