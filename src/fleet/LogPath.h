#pragma once

#include <string>

#include "platform/ThreadAnnotations.h"

namespace valdorn {

class RunnersStore;

namespace Config {

// The log file of the first runner on the list, which must not be empty: the program ends
// otherwise. Main thread only.
std::string logPath(const RunnersStore& store) VALDORN_ON_MAIN_THREAD;

}  // namespace Config

}  // namespace valdorn
