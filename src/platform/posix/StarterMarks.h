#pragma once

namespace valdorn {

// Whether a session bus has started this process because somebody asked for its name, as far as the
// environment tells: the marks are inherited, so a terminal that a bus has started passes them on
// to whatever is started from it. Takes them out of the environment, so that children are not
// deceived in the same way. To be called before there is a second thread.
bool takeStarterMarks();

}  // namespace valdorn
