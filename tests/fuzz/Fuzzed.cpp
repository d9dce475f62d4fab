#include "Fuzzed.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace valdorn {

namespace {

constexpr char pieceEnd = '\xFE';
constexpr char runStart = '\xFD';
constexpr std::size_t runBytes = 4;
constexpr std::size_t longestRuns = std::size_t{256} * 1024;

std::size_t runLength(std::string_view run) {
    const auto high = static_cast<unsigned char>(run[1]);
    const auto low = static_cast<unsigned char>(run[2]);
    return 2 * (std::size_t{high} * 256 + low);
}

// `left`: how long runs may still be.
std::string withRuns(std::string_view piece, std::size_t& left) {
    std::string text;
    for (std::size_t at = 0; at < piece.size(); ++at) {
        if (piece[at] != runStart || at + runBytes > piece.size()) {
            text += piece[at];
            continue;
        }
        const std::size_t length = runLength(piece.substr(at));
        at += runBytes - 1;
        if (length > left)
            continue;
        left -= length;
        text.append(length, piece[at]);
    }
    return text;
}

}  // namespace

void require(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", rule);
    std::abort();
}

std::vector<std::string> piecesOf(std::string_view input) {
    std::vector<std::string> pieces(1);
    for (const char c : input) {
        if (c == pieceEnd)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

std::vector<std::string> piecesWithRunsOf(std::string_view input) {
    std::vector<std::string> pieces = piecesOf(input);
    std::size_t left = longestRuns;
    for (std::string& piece : pieces)
        piece = withRuns(piece, left);
    return pieces;
}

std::string pieceAt(const std::vector<std::string>& pieces, std::size_t index) {
    return index < pieces.size() ? pieces[index] : std::string();
}

}  // namespace valdorn

// What libFuzzer and the replay call.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    valdorn::fuzzed({reinterpret_cast<const char*>(data), size});
    return 0;
}
