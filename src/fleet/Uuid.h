#pragma once

#include <string>

namespace valdorn {

// A new random UUID (version 4) in its canonical form: 36 characters, upper-case hexadecimal
// digits in groups of 8-4-4-4-12. Any thread; the randomness is the operating system's.
std::string makeUuid();

}  // namespace valdorn
