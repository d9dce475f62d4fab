#include "text/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "text/Ascii.h"

namespace valdorn {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Text that is not ASCII at one place seldom is right after it: so many bytes are then looked at by
// the character, before ASCII is looked for again.
constexpr std::size_t byCharacterBytes = 64;

constexpr unsigned char lowestTrail = 0x80;
constexpr unsigned char highestTrail = 0xBF;

// What a lead byte promises: how long the character is, and which second byte it may have, so that
// there are no overlong forms, no surrogates and nothing above U+10FFFF. The further bytes are
// 80 to BF.
struct Promise {
    std::size_t bytes;  // 0 for a byte that leads nothing
    unsigned char lowest = lowestTrail;
    unsigned char highest = highestTrail;
};

Promise promiseOf(unsigned char lead) {
    if (lead < 0x80)
        return {1};
    if (lead < 0xC2 || lead > 0xF4)
        return {0};
    if (lead < 0xE0)
        return {2};
    switch (lead) {
        case 0xE0:
            return {3, 0xA0};
        case 0xED:
            return {3, lowestTrail, 0x9F};
        case 0xF0:
            return {4, 0x90};
        case 0xF4:
            return {4, lowestTrail, 0x8F};
        default:
            return {lead < 0xF0 ? std::size_t{3} : std::size_t{4}};
    }
}

struct Character {
    bool isWellFormed;
    std::size_t bytes;  // of it, or of the maximal part of what is none
};

// The first character of a text that is not empty.
Character firstCharacter(std::string_view bytes) {
    Promise promise = promiseOf(static_cast<unsigned char>(bytes.front()));
    if (promise.bytes == 0)
        return {false, 1};
    for (std::size_t at = 1; at < promise.bytes; ++at) {
        const auto next = static_cast<unsigned char>(at < bytes.size() ? bytes[at] : '\0');
        if (next < promise.lowest || next > promise.highest)
            return {false, at};
        promise.lowest = lowestTrail;
        promise.highest = highestTrail;
    }
    return {true, promise.bytes};
}

std::size_t wellFormedPrefix(std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        at += asciiPrefix(bytes.substr(at));
        const std::size_t end = std::min(bytes.size(), at + byCharacterBytes);
        while (at < end) {
            const Character next = firstCharacter(bytes.substr(at));
            if (!next.isWellFormed)
                return at;
            at += next.bytes;
        }
    }
    return at;
}

}  // namespace

bool isWellFormedUtf8(std::string_view bytes) {
    return wellFormedPrefix(bytes) == bytes.size();
}

std::string decodedUtf8(std::string_view bytes) {
    std::string text;
    while (true) {
        const std::size_t prefix = wellFormedPrefix(bytes);
        text += bytes.substr(0, prefix);
        bytes.remove_prefix(prefix);
        if (bytes.empty())
            return text;
        text += replacement;
        bytes.remove_prefix(firstCharacter(bytes).bytes);
    }
}

}  // namespace valdorn
