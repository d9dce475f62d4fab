#pragma once

#include <string>

namespace valdorn {

// Absolute path of the running executable, as the kernel knows it; empty when it does not say.
//
// Any thread. Ask once, at start-up: when an upgrade replaces the file while we run, the kernel
// appends " (deleted)" to later answers.
std::string executablePath();

}  // namespace valdorn
