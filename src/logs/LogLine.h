#pragma once

#include <memory>
#include <string_view>
#include <vector>

namespace valdorn {

// One line of a log, shared and never changed (well-formed UTF-8, without its line end). The same
// object is the same line: what has become of a list can be told by comparing pointers.
//
// A line keeps in memory what was read together with it, so thousands of them cost one allocation
// for each 64 KiB of text.
using LogLine = std::shared_ptr<const std::string_view>;

using LogLines = std::vector<LogLine>;

}  // namespace valdorn
