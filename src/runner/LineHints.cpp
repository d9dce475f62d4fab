#include "runner/LineHints.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "runner/RunnerLogTexts.h"

namespace valdorn::LineHints {

namespace {

namespace Texts = RunnerLogTexts;

// The letters around a blank of a text. All hints have the blank in common, so it is looked for once;
// of the blanks of a text it is the one that other lines have least between these letters.
struct Hint {
    std::string_view text;
    std::string_view letters;
};

constexpr std::array hints{
    Hint{Texts::version, "h v"},  Hint{Texts::repository, "o i"}, Hint{Texts::jobStarted, "h m"},
    Hint{Texts::finished, "d ("}, Hint{Texts::declared, "e s"},   Hint{Texts::noRoute, "o h"},
    Hint{Texts::denied, "n d"},
};

constexpr std::size_t letterCount = 3;

constexpr bool isWithin(const Hint& hint) {
    return hint.letters.size() == letterCount && hint.letters[1] == ' ' &&
           hint.text.find(hint.letters) != std::string_view::npos;
}
static_assert(std::all_of(hints.begin(), hints.end(), isWithin));

constexpr bool isHintedAt(std::string_view text) {
    return std::any_of(hints.begin(), hints.end(),
                       [text](const Hint& hint) { return hint.text == text; });
}
static_assert(std::all_of(Texts::telling.begin(), Texts::telling.end(), isHintedAt));

// So many places of a line are looked at together, each for all hints. Every machine that we know
// compares 16 bytes in one step; for others the compiler makes it smaller steps.
constexpr std::size_t width = 16;
using Bytes [[gnu::vector_size(width)]] = unsigned char;
using Hits [[gnu::vector_size(width)]] = signed char;

// What is looked at for one step: its places, and the further letters of the last.
constexpr std::size_t windowBytes = width + letterCount - 1;

Bytes bytesAt(const char* place) {
    Bytes bytes;
    std::memcpy(&bytes, place, sizeof bytes);
    return bytes;
}

Hits areAll(Bytes bytes, char letter) {
    return bytes == static_cast<unsigned char>(letter);
}

// Where any hint begins.
Hits hitsIn(const char* window) {
    const Bytes before = bytesAt(window);
    const Bytes after = bytesAt(window + 2);
    Hits hits{};
    for (const auto& [text, letter] : hints)
        hits |= areAll(before, letter[0]) & areAll(after, letter[2]);
    return hits & areAll(bytesAt(window + 1), ' ');
}

bool isAny(Hits hits) {
    std::array<std::uint64_t, sizeof hits / sizeof(std::uint64_t)> words{};
    std::memcpy(words.data(), &hits, sizeof hits);
    return std::any_of(words.begin(), words.end(), [](std::uint64_t word) { return word != 0; });
}

}  // namespace

bool mayTell(std::string_view line) {
    if (line.size() < windowBytes) {
        std::array<char, windowBytes> padded{};
        std::copy(line.begin(), line.end(), padded.begin());
        return isAny(hitsIn(padded.data()));
    }
    const std::size_t last = line.size() - windowBytes;
    Hits hits = hitsIn(line.data() + last);
    for (std::size_t at = 0; at < last; at += width)
        hits |= hitsIn(line.data() + at);
    return isAny(hits);
}

}  // namespace valdorn::LineHints
