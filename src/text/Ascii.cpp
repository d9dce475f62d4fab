#include "text/Ascii.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace valdorn {

namespace {

// Goes on from `at` as long as the next `step` bytes together are ASCII.
template <std::size_t step>
std::size_t skipped(std::string_view text, std::size_t at) {
    // Any other step would read past its own end.
    static_assert(step <= sizeof(std::uint64_t) || step % sizeof(std::uint64_t) == 0);
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    for (; at + step <= text.size(); at += step) {
        std::uint64_t all = 0;
        for (std::size_t part = 0; part < step; part += sizeof all) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data() + at + part, std::min(step, sizeof word));
            all |= word;
        }
        if ((all & highBits) != 0)
            break;
    }
    return at;
}

}  // namespace

std::size_t asciiPrefix(std::string_view text) {
    return skipped<1>(text, skipped<8>(text, skipped<64>(text, 0)));
}

std::string asciiLowerCased(std::string_view text) {
    std::string lowered(text);
    for (char& letter : lowered) {
        if ('A' <= letter && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    }
    return lowered;
}

}  // namespace valdorn
