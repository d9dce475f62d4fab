#pragma once

#include <string>

namespace valdorn {

// The bytes as well-formed UTF-8: what is none comes out as U+FFFD, one for each maximal part of a
// sequence, as browsers do it (F0 80 80 gives three, a cut-off E2 82 one). Text that is well-formed,
// which nearly all is, is handed through without a copy. Pure; any thread.
std::string decodedUtf8(std::string bytes);

}  // namespace valdorn
