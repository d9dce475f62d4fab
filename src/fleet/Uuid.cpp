#include "fleet/Uuid.h"

#include <array>
#include <cstdint>
#include <random>

namespace valdorn {

std::string makeUuid() {
    std::array<std::uint32_t, 4> words{};
    std::random_device random;
    for (std::uint32_t& word : words)
        word = random();
    words[1] = (words[1] & 0xFFFF0FFFU) | 0x00004000U;  // version 4
    words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U;  // the variant of RFC 4122

    std::string text;
    for (std::size_t digit = 0; digit < 32; ++digit) {
        if (digit == 8 || digit == 12 || digit == 16 || digit == 20)
            text += '-';
        text += "0123456789ABCDEF"[(words[digit / 8] >> (28 - 4 * (digit % 8))) & 0xFU];
    }
    return text;
}

}  // namespace valdorn
