#pragma once

#include <string>
#include <string_view>

namespace valdorn {

// Joins a folder and what stands in it with one "/" between them; doubled and trailing separators
// are dropped ("/" itself stays). Pure text: nothing is looked up, "." and ".." are kept.
std::string appendPathComponent(std::string_view folder, std::string_view component);

}  // namespace valdorn
