#pragma once

namespace valdorn {

// To be called by the main thread before it asks about a bus for the first time, which makes Qt's
// thread for it. Throws std::system_error where there can be no further thread: Qt (6.4) would wait
// for its own for ever.
void makeBusThread();

}  // namespace valdorn
