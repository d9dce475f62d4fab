#include "update/UpdateCheck.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "text/CharacterBreaks.h"

namespace valdorn::UpdateCheck {

namespace {

// Hands the text out by user-perceived characters.
class Characters {
public:
    explicit Characters(std::string_view text)
        : text_(text.substr(0, CharacterBreaks::longestBytes)), breaks_(text_) {}

    // The next character; empty at the end.
    std::string_view next() {
        const std::size_t start = end_;
        end_ = breaks_.next();
        return text_.substr(start, end_ - start);
    }

private:
    const std::string_view text_;
    CharacterBreaks breaks_;
    std::size_t end_ = 0;
};

// The first code point decides, whatever marks follow.
bool isNumeric(std::string_view character) {
    constexpr std::size_t longestBytes = 4;
    const UChar32 first =
        icu::UnicodeString::fromUTF8(character.substr(0, longestBytes)).char32At(0);
    return u_getIntPropertyValue(first, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

std::int64_t number(std::string_view piece) {
    const char* const end = piece.data() + piece.size();
    std::int64_t value = 0;  // and it stays so when the number is too great
    const bool isWhole = std::from_chars(piece.data(), end, value).ptr == end;
    return isWhole ? value : 0;
}

std::int64_t at(const std::vector<std::int64_t>& numbers, std::size_t index) {
    return index < numbers.size() ? numbers[index] : 0;
}

}  // namespace

std::vector<std::int64_t> components(std::string_view version) {
    Characters characters(version);
    std::string_view character = characters.next();
    while (character == "v")
        character = characters.next();

    std::vector<std::int64_t> numbers;
    std::string_view piece;  // grows by neighbours of the same text
    const auto finishPiece = [&] {
        if (!piece.empty())
            numbers.push_back(number(piece));
        piece = {};
    };
    for (; !character.empty(); character = characters.next()) {
        if (character == ".")
            finishPiece();
        else if (!isNumeric(character))
            break;
        else
            piece = piece.empty() ? character
                                  : std::string_view(piece.data(), piece.size() + character.size());
    }
    finishPiece();
    return numbers;
}

bool isNewer(std::string_view version, std::string_view than) {
    const auto ours = components(version);
    const auto theirs = components(than);
    for (std::size_t index = 0; index < std::max(ours.size(), theirs.size()); ++index) {
        if (at(ours, index) != at(theirs, index))
            return at(ours, index) > at(theirs, index);
    }
    return false;
}

}  // namespace valdorn::UpdateCheck
