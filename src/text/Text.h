#pragma once

#include <cstddef>
#include <string_view>

namespace valdorn {

// Questions about UTF-8 text. Pure; any thread.
namespace Text {

// The length in bytes of the text without a last character of which only the beginning is there.
std::size_t completeLength(std::string_view text);

// The most that lastCharacters() gives: one perceived character may have any number of marks, and
// what is kept of a hostile child's output must not grow with them. 8000 characters fit even if each
// is a family of emoji.
inline constexpr std::size_t longestTailBytes = std::size_t{256} * 1024;

// The last `count` user-perceived characters of well-formed text, at most longestTailBytes of it: a
// letter with its marks, a flag or a CR LF pair counts as one and is not cut within that limit. The
// whole text when it has no more.
std::string_view lastCharacters(std::string_view text, std::size_t count);

}  // namespace Text

}  // namespace valdorn
