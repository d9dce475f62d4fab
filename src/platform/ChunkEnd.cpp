#include "platform/ChunkEnd.h"

namespace valdorn {

namespace {

// How many bytes the character is to have that begins like this; 0 for a byte that begins none.
std::size_t promised(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC0)
        return 0;
    if (lead < 0xE0)
        return 2;
    return lead < 0xF0 ? 3 : 4;
}

}  // namespace

std::size_t chunkEnd(std::string_view bytes) {
    if (const std::size_t feed = bytes.rfind('\n'); feed != std::string_view::npos)
        return feed + 1;
    constexpr std::size_t longestBeginning = 3;
    for (std::size_t back = 1; back <= longestBeginning && back < bytes.size(); ++back) {
        const std::size_t needed = promised(static_cast<unsigned char>(bytes[bytes.size() - back]));
        if (needed > 0)
            return needed > back ? bytes.size() - back : bytes.size();
    }
    return bytes.size();
}

}  // namespace valdorn
