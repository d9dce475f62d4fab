#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace valdorn {

// What a version text says. Pure; any thread. Any bytes are taken: ill-formed UTF-8 counts as
// U+FFFD.
namespace UpdateCheck {

// The numbers of the version: every leading "v" is skipped, then the longest run of numeric
// characters and dots counts ("v0.3.0-rc1" is 0, 3, 0), parted at the dots. Numeric is what Unicode
// gives a numeric value, in any script; but a number that is not all ASCII digits, or that is over
// 64 bits, is 0. Characters are user-perceived ones: a dot with a combining mark is no dot.
std::vector<std::int64_t> components(std::string_view version);

// True when `version` is strictly newer: greater at the first number that differs, where numbers
// that are not there count as 0.
bool isNewer(std::string_view version, std::string_view than);

}  // namespace UpdateCheck

}  // namespace valdorn
