// Text by Unicode's rules, beside what ICU and plain loops make of it. The first piece of the input
// is a text, the second what is looked for in it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include "Fuzzed.h"
#include "platform/ChunkEnd.h"
#include "support/PlainLines.h"
#include "support/PlainSearch.h"
#include "text/Ascii.h"
#include "text/CaseFold.h"
#include "text/CharacterBreaks.h"
#include "text/Text.h"
#include "text/Utf8.h"

namespace valdorn {

namespace {

// The plain search takes time that grows with the cube of a text, and folds a heap of marks as a
// whole: only short texts are compared.
constexpr std::size_t longestSearched = 32;

void checkAscii(const std::string& text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const auto end = std::find_if_not(text.begin(), text.end(), isAscii);
    require(asciiPrefix(text) == static_cast<std::size_t>(end - text.begin()),
            "ASCII ends where the first byte is that is none");
    std::string lowered = text;
    for (char& c : lowered)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    require(asciiLowerCased(text) == lowered, "the capitals A to Z become small, nothing else");
}

void checkUtf8(const std::string& text) {
    require(decodedUtf8(text) == plainText(text), "text is decoded as ICU does it");
    require(isWellFormedUtf8(text) == (plainText(text) == text), "well-formed is what stays");
}

// Where the characters of well-formed text begin, and its end.
bool isBoundary(const std::string& text, std::size_t at) {
    return at == text.size() || !U8_IS_TRAIL(static_cast<unsigned char>(text[at]));
}

// Each beginning of well-formed text is what a reader may have before the rest comes.
void checkCuts(const std::string& text) {
    constexpr std::size_t longest = 200;
    std::size_t boundary = 0;
    for (std::size_t size = 1; size <= std::min(text.size(), longest); ++size) {
        if (isBoundary(text, size))
            boundary = size;
        const std::string_view start = std::string_view(text).substr(0, size);
        require(Text::completeLength(start) == boundary, "a cut character is left out");
        const std::size_t feed = start.rfind('\n');
        const std::size_t end = feed != std::string_view::npos ? feed + 1
                                : boundary > 0                 ? boundary
                                                               : size;
        require(chunkEnd(start) == end, "a chunk ends after a line, else between characters");
    }
}

void checkCutsOfAnything(const std::string& text) {
    const std::size_t complete = Text::completeLength(text);
    require(complete <= text.size() && text.size() - complete <= 3, "little is left out");
    if (text.empty())
        return;
    const std::size_t end = chunkEnd(text);
    require(end > 0 && end <= text.size(), "a chunk is never empty");
}

// The ends of the perceived characters, in bytes.
std::vector<std::size_t> plainBreaks(const std::string& wellFormed) {
    const auto text = icu::UnicodeString::fromUTF8(wellFormed);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    breaks->setText(text);
    std::vector<std::size_t> ends;
    std::size_t bytes = 0;
    for (std::int32_t at = 0; at < text.length(); at = breaks->current()) {
        std::string character;
        bytes += text.tempSubStringBetween(at, breaks->next()).toUTF8String(character).size();
        ends.push_back(bytes);
    }
    return ends;
}

void checkBreaks(const std::string& wellFormed) {
    const std::vector<std::size_t> ends = plainBreaks(wellFormed);
    CharacterBreaks forwards(wellFormed);
    for (const std::size_t end : ends)
        require(forwards.next() == end, "characters end where they do in UTF-16");
    require(forwards.next() == wellFormed.size(), "the end stays the end");
    CharacterBreaks backwards(wellFormed);
    require(backwards.last() == wellFormed.size(), "the last place is the end");
    for (std::size_t left = ends.size(); left > 0; --left)
        require(backwards.previous() == (left > 1 ? ends[left - 2] : 0), "and so backwards");
    for (const std::size_t count : {0U, 1U, 2U, 7U}) {
        const std::size_t start = count < ends.size() ? ends[ends.size() - count - 1] : 0;
        require(Text::lastCharacters(wellFormed, count) == wellFormed.substr(start),
                "the last characters are those");
    }
}

void checkSearch(const std::string& text, const std::string& query) {
    if (text.size() > longestSearched || query.size() > longestSearched)
        return;
    for (const bool isTurkic : {false, true}) {
        const CaseFold fold(isTurkic ? "tr_TR" : "C");
        const CaseFold::Key key = fold.key(text);
        require(isWellFormedUtf8(key.text), "a key is well-formed");
        require(std::is_sorted(key.inside.begin(), key.inside.end()), "its inner places ascend");
        require(CaseFold::contains(key, key), "a text contains itself");
        require(
            CaseFold::contains(key, fold.key(query)) == PlainSearch(isTurkic).finds(text, query),
            "found is what the plain search finds");
    }
}

}  // namespace

void fuzzed(std::string_view input) {
    const std::vector<std::string> pieces = piecesOf(input);
    const std::string& text = pieces.front();
    checkAscii(text);
    checkUtf8(text);
    checkCutsOfAnything(text);
    const std::string wellFormed = plainText(text);
    checkCuts(wellFormed);
    checkBreaks(wellFormed);
    checkSearch(text, pieceAt(pieces, 1));
}

}  // namespace valdorn
