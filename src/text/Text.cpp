#include "text/Text.h"

#include <unicode/utf8.h>

#include "text/CharacterBreaks.h"

namespace valdorn::Text {

std::size_t completeLength(std::string_view text) {
    constexpr std::size_t longestCharacter = 4;
    for (std::size_t back = 1; back <= longestCharacter && back <= text.size(); ++back) {
        const auto byte = static_cast<unsigned char>(text[text.size() - back]);
        if (U8_IS_TRAIL(byte))
            continue;
        const std::size_t needed = 1U + static_cast<unsigned>(U8_COUNT_TRAIL_BYTES(byte));
        return needed > back ? text.size() - back : text.size();
    }
    return text.size();
}

std::string_view lastCharacters(std::string_view text, std::size_t count) {
    if (text.size() > longestTailBytes) {
        std::size_t cut = text.size() - longestTailBytes;
        while (cut < text.size() && U8_IS_TRAIL(static_cast<unsigned char>(text[cut])))
            ++cut;
        text.remove_prefix(cut);
    }
    // A character has at least one byte, so short texts need no breaking.
    if (text.size() <= count)
        return text;

    CharacterBreaks breaks(text);
    std::size_t start = breaks.last();
    for (std::size_t taken = 0; taken < count && start > 0; ++taken)
        start = breaks.previous();
    return text.substr(start);
}

}  // namespace valdorn::Text
