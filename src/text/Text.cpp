#include "text/Text.h"

#include <cassert>
#include <cstdint>
#include <cstring>

#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include "text/CharacterBreaks.h"

namespace valdorn::Text {

namespace {

// Where the first byte that is not ASCII stands, looked for eight bytes at a time: output is
// nearly all ASCII.
std::size_t asciiPrefix(std::string_view bytes) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= bytes.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + at, sizeof word);
        if ((word & highBits) != 0)
            break;
    }
    while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80)
        ++at;
    return at;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    bytes.remove_prefix(asciiPrefix(bytes));
    if (bytes.empty())
        return true;
    assert(bytes.size() <= INT32_MAX);  // what ICU can address
    // Measures how long the text would be as UTF-16, and finds every flaw on the way.
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                  &status);
    return status != U_INVALID_CHAR_FOUND;
}

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
