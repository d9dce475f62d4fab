#pragma once

#include <cstdlib>

namespace valdorn {

// Before the application is made: it needs no display, unless QT_QPA_PLATFORM asks for one.
inline void runOffscreen() {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
}

}  // namespace valdorn
