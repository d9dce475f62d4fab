#pragma once

#include <string>

namespace valdorn {

// What whoever has started this process has left in the environment about it.
namespace StarterMarks {

// Whether a session bus has started this process because somebody asked for its name, as far as the
// environment tells: the marks are inherited, so a terminal that a bus has started passes them on
// to whatever is started from it. Takes them out of the environment, so that children are not
// deceived in the same way. To be called before there is a second thread.
bool takeSessionBus();

// What the launcher has handed over to raise a window with, and to be told by that the launch is
// over, or nothing. Older launchers put Wayland's token where X11's startup id stands. Takes it out
// of the environment, so that nobody else uses it: no child, and not Qt, which would put the id on
// whatever X11 window it shows first, and that may be much later. Before there is a second thread.
std::string takeActivationToken();

}  // namespace StarterMarks

}  // namespace valdorn
