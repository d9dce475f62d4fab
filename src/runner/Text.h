#pragma once

#include <cstddef>
#include <string_view>

namespace valdorn {

// Questions about UTF-8 text. Pure; any thread.
namespace Text {

// True when the bytes are well-formed UTF-8 (no surrogates, no overlong forms, nothing cut off).
bool isUtf8(std::string_view bytes);

// The length in bytes of the text without a last character of which only the beginning is there.
std::size_t completeLength(std::string_view text);

// The last `count` user-perceived characters of well-formed text: a letter with its marks, a flag
// or a CR LF pair counts as one and is never cut. The whole text when it has no more.
std::string_view lastCharacters(std::string_view text, std::size_t count);

}  // namespace Text

}  // namespace valdorn
