// What the release service answers, and what versions say. The first piece of the input is the
// answer, the others are versions; the answer is taken for one, too.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "Fuzzed.h"
#include "PlainJson.h"
#include "update/ReleaseTag.h"
#include "update/UpdateCheck.h"

namespace valdorn {

namespace {

using Numbers = std::vector<std::int64_t>;

std::optional<std::string> plainTag(std::string_view answer) {
    const std::optional<PlainJson> json = plainJson(answer);
    if (!json || json->kind != PlainJson::Kind::object)
        return std::nullopt;
    const PlainJson* const tag = json->member("tag_name");
    if (tag == nullptr || tag->kind != PlainJson::Kind::text)
        return std::nullopt;
    return tag->text;
}

std::vector<icu::UnicodeString> charactersOf(const std::string& bytes) {
    const auto text = icu::UnicodeString::fromUTF8(bytes);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    breaks->setText(text);
    std::vector<icu::UnicodeString> characters;
    for (std::int32_t at = 0; at < text.length(); at = breaks->current())
        characters.emplace_back(text, at, breaks->next() - at);
    return characters;
}

bool isNumeric(const icu::UnicodeString& character) {
    return u_getNumericValue(character.char32At(0)) != U_NO_NUMERIC_VALUE;
}

std::int64_t plainNumber(const icu::UnicodeString& piece) {
    std::int64_t value = 0;
    for (std::int32_t at = 0; at < piece.length(); ++at) {
        if (piece[at] < u'0' || piece[at] > u'9')
            return 0;
        const bool isOver = __builtin_mul_overflow(value, std::int64_t{10}, &value) ||
                            __builtin_add_overflow(value, piece[at] - u'0', &value);
        if (isOver)
            return 0;
    }
    return value;
}

Numbers plainComponents(const std::string& version) {
    std::vector<icu::UnicodeString> pieces(1);
    bool isStart = true;
    for (const icu::UnicodeString& character : charactersOf(version)) {
        isStart = isStart && character == icu::UnicodeString(u'v');
        if (isStart)
            continue;
        if (character == icu::UnicodeString(u'.'))
            pieces.emplace_back();
        else if (isNumeric(character))
            pieces.back() += character;
        else
            break;
    }
    Numbers numbers;
    for (const icu::UnicodeString& piece : pieces) {
        if (!piece.isEmpty())
            numbers.push_back(plainNumber(piece));
    }
    return numbers;
}

// Over numbers of the same count, order is the one of lists.
bool isPlainlyNewer(Numbers version, Numbers than) {
    const std::size_t size = std::max(version.size(), than.size());
    version.resize(size);
    than.resize(size);
    return version > than;
}

void checkPair(const std::string& version, const std::string& than) {
    const bool isNewer = UpdateCheck::isNewer(version, than);
    require(isNewer == isPlainlyNewer(plainComponents(version), plainComponents(than)),
            "newer is what the plain comparison says");
    require(!isNewer || !UpdateCheck::isNewer(than, version), "only one of two is newer");
}

}  // namespace

void fuzzed(std::string_view input) {
    const std::vector<std::string> pieces = piecesOf(input);
    require(releaseTag(pieces.front()) == plainTag(pieces.front()),
            "the tag is the one of the plain rules");
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        require(UpdateCheck::components(pieces[index]) == plainComponents(pieces[index]),
                "the numbers are those of the plain rules");
        checkPair(pieces[index], pieceAt(pieces, index + 1));
    }
}

}  // namespace valdorn
