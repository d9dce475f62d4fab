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

}  // namespace

void require(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", rule);
    std::abort();
}

std::vector<std::string> piecesOf(std::string_view input) {
    std::vector<std::string> pieces(1);
    std::size_t runs = 0;
    for (std::size_t at = 0; at < input.size(); ++at) {
        if (input[at] == pieceEnd) {
            pieces.emplace_back();
        } else if (input[at] == runStart && at + runBytes <= input.size()) {
            const std::size_t length = runLength(input.substr(at));
            runs += length;
            if (runs <= longestRuns)
                pieces.back().append(length, input[at + runBytes - 1]);
            at += runBytes - 1;
        } else {
            pieces.back() += input[at];
        }
    }
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
