#pragma once

#include <string>
#include <string_view>

namespace valdorn {

// True when the bytes are well-formed UTF-8. Of any length; fast where they are ASCII. Pure; any
// thread.
bool isWellFormedUtf8(std::string_view bytes);

// The bytes as well-formed UTF-8: what is none comes out as U+FFFD, one for each maximal part of a
// sequence, as browsers do it (F0 80 80 gives three, a cut-off E2 82 one). Pure; any thread.
std::string decodedUtf8(std::string_view bytes);

}  // namespace valdorn
