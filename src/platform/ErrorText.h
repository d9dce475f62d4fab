#pragma once

#include <string>

namespace valdorn {

// What the system says about an errno, in English whatever the locale; the number for one that it
// does not know. Any thread.
std::string errorText(int errorNumber);

}  // namespace valdorn
