#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace valdorn {

// How many bytes of ASCII the text begins with: where its first byte above 7F stands, or its size.
// Looked at many bytes at a time, as logs and output are nearly all ASCII. Pure; any thread.
std::size_t asciiPrefix(std::string_view text);

// The text with the letters A to Z as small ones and all else as it is, whatever the locale says of
// an "I". Pure; any thread.
std::string asciiLowerCased(std::string_view text);

}  // namespace valdorn
