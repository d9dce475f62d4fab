#pragma once

#include <cstddef>
#include <string_view>

namespace valdorn {

// Where to cut output that goes on right behind these bytes, of which there is one at the least:
// after their last line feed; where there is none, before a last character of UTF-8 of which only
// the beginning is there. More than 0. Pure; any thread.
std::size_t chunkEnd(std::string_view bytes);

}  // namespace valdorn
