#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <unicode/unistr.h>

namespace valdorn {

// The text of the bytes as ICU has it.
inline std::string plainText(const std::string& bytes) {
    std::string text;
    icu::UnicodeString::fromUTF8(bytes).toUTF8String(text);
    return text;
}

// The last lines of the bytes, the plain way: everything decoded, cut from the front.
inline std::vector<std::string> plainLines(const std::string& bytes, std::size_t maxLines) {
    std::vector<std::string> lines(1);
    char before = '\0';
    for (const char character : plainText(bytes)) {
        if (character == '\n' && before != '\r')
            lines.emplace_back();
        else
            lines.back() += character;
        before = character;
    }
    if (lines.back().empty())
        lines.pop_back();
    if (lines.size() > maxLines)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(maxLines));
    return lines;
}

}  // namespace valdorn
