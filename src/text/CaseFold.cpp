#include "text/CaseFold.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include "text/Ascii.h"
#include "text/Icu.h"

namespace valdorn {

namespace {

constexpr std::string_view dotlessI = "\xC4\xB1";

std::int32_t length32(std::string_view text) {
    return static_cast<std::int32_t>(text.size());
}

// The characters beyond ASCII that are their own key, and that stand alone beside each other: most
// small letters, ideographs, symbols. U+FFFD is left out, so that ill-formed bytes, which are taken
// for it, are never copied.
const icu::UnicodeSet& settledCharacters() {
    static const icu::UnicodeSet characters = [] {
        UErrorCode status = U_ZERO_ERROR;
        icu::UnicodeSet set(
            u"[[[:GCB=Other:][:GCB=Control:]]&[:^CWCF:]&[:NFD_Inert:]"
            u"-[\\u0000-\\u007F\\uFFFD]]",
            status);
        Icu::require(status);
        set.freeze();
        return set;
    }();
    return characters;
}

constexpr std::uint64_t everyByte(unsigned char value) {
    return 0x0101010101010101U * value;
}

// Makes the ASCII letters among eight bytes small. The lower seven bits of each byte are moved so
// that the eighth tells whether they reach 'A', and whether they go past 'Z'.
std::uint64_t lowered(std::uint64_t bytes) {
    const std::uint64_t ascii = ~bytes & everyByte(0x80);
    const std::uint64_t low = bytes & everyByte(0x7F);
    const std::uint64_t reachesA = low + everyByte(0x80 - 'A');
    const std::uint64_t passesZ = low + everyByte(0x7F - 'Z');
    return bytes | ((reachesA & ~passesZ & ascii) >> 2U);
}

void appendLowered(std::string& out, std::string_view plain) {
    std::size_t at = out.size();
    out.append(plain);
    std::uint64_t word = 0;
    for (; at + sizeof word <= out.size(); at += sizeof word) {
        std::memcpy(&word, out.data() + at, sizeof word);
        word = lowered(word);
        std::memcpy(out.data() + at, &word, sizeof word);
    }
    std::memcpy(&word, out.data() + at, out.size() - at);
    word = lowered(word);
    std::memcpy(out.data() + at, &word, out.size() - at);
}

// How much of the text, from its start, is ASCII or settled.
std::size_t plainPrefix(std::string_view text) {
    std::size_t at = 0;
    while (true) {
        at += asciiPrefix(text.substr(at));
        if (at == text.size())
            return at;
        const std::int32_t settled = settledCharacters().spanUTF8(
            text.data() + at, length32(text.substr(at)), USET_SPAN_SIMPLE);
        if (settled == 0)
            return at;
        at += static_cast<std::size_t>(settled);
    }
}

std::size_t lastCharacterStart(std::string_view text) {
    std::size_t at = text.size() - 1;
    while (at > 0 && U8_IS_TRAIL(text[at]))
        --at;
    return at;
}

std::size_t firstCharacterEnd(std::string_view text) {
    std::size_t at = 1;
    while (at < text.size() && U8_IS_TRAIL(text[at]))
        ++at;
    return at;
}

// How much of the text, from its start, may belong together: until two plain characters meet, of
// which the first is still taken, as what stands before it may lean on it.
std::size_t tangledPrefix(std::string_view text) {
    bool plainBefore = false;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::string_view character = text.substr(at, firstCharacterEnd(text.substr(at)));
        const bool plain = plainPrefix(character) == character.size();
        if (plain && plainBefore)
            break;
        plainBefore = plain;
        at += character.size();
    }
    return at;
}

// True when no two code points of the text can make one perceived character, CR LF aside.
bool standAlone(const icu::UnicodeString& text) {
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        switch (u_getIntPropertyValue(text.char32At(at), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
            case U_GCB_OTHER:
            case U_GCB_CONTROL:
            case U_GCB_CR:
            case U_GCB_LF:
                break;
            default:
                return false;
        }
    }
    return true;
}

// Calls `take` with the perceived characters of the text one after another.
template <typename Take>
void forEachCharacter(const icu::UnicodeString& text, Take take) {
    std::unique_ptr<icu::BreakIterator> breaks;
    if (!standAlone(text)) {
        breaks = Icu::characterBreaks();
        breaks->setText(text);
    }
    for (std::int32_t at = 0; at < text.length();) {
        const std::int32_t next = breaks ? breaks->next() : text.moveIndex32(at, 1);
        take(text.tempSubStringBetween(at, next));
        at = next;
    }
}

// Turkish and Azerbaijani are folded composed: I is another letter there when it bears its dot or a
// hat. Elsewhere text is folded decomposed, so that a Greek subscript, which becomes a letter, comes
// after the other marks.
icu::UnicodeString folded(const icu::UnicodeString& character, bool turkic) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const decomposing = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* const before =
        turkic ? icu::Normalizer2::getNFCInstance(status) : decomposing;
    Icu::require(status);
    icu::UnicodeString text = before->normalize(character, status);
    text.foldCase(turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
    text = decomposing->normalize(text, status);
    Icu::require(status);
    return text;
}

// Folds a perceived character in stretches: putting a heap of marks into order takes time that grows
// with its square, and no writing has that many on one letter (stream-safe text has 30).
void appendFolded(std::string& out, const icu::UnicodeString& character, bool turkic) {
    constexpr std::int32_t together = 64;
    for (std::int32_t at = 0; at < character.length();) {
        const std::int32_t end = character.getChar32Limit(at + together);
        folded(character.tempSubStringBetween(at, end), turkic).toUTF8String(out);
        at = end;
    }
}

// True when a perceived character of the original may begin or end at this place of its key.
bool isBoundary(const CaseFold::Key& key, std::size_t at) {
    if (at == 0 || at == key.text.size())
        return true;
    if (key.text[at] == '\n' && key.text[at - 1] == '\r')
        return false;
    return !std::binary_search(key.inside.begin(), key.inside.end(), at);
}

bool isTurkic(std::string_view locale) {
    std::string language;
    appendLowered(language, locale.substr(0, locale.find_first_of("_-.@")));
    return language == "tr" || language == "az";
}

}  // namespace

CaseFold::CaseFold(std::string_view locale) : turkic_(isTurkic(locale)) {}

CaseFold::Key CaseFold::key(std::string_view text) const {
    text = text.substr(0, searchedBytes);
    Key key;
    key.text.reserve(text.size());
    while (true) {
        std::size_t plain = plainPrefix(text);
        // The last plain character may bear the marks that follow.
        if (plain < text.size() && plain > 0)
            plain = lastCharacterStart(text.substr(0, plain));
        appendPlain(key, text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            return key;
        const std::size_t tangled = tangledPrefix(text);
        appendTangled(key, text.substr(0, tangled));
        text.remove_prefix(tangled);
    }
}

void CaseFold::appendPlain(Key& key, std::string_view plain) const {
    std::size_t at = 0;
    while (turkic_ && (at = plain.find('I')) != std::string_view::npos) {
        appendLowered(key.text, plain.substr(0, at));
        key.text += dotlessI;
        plain.remove_prefix(at + 1);
    }
    appendLowered(key.text, plain);
}

void CaseFold::appendTangled(Key& key, std::string_view tangled) const {
    const auto text =
        icu::UnicodeString::fromUTF8(icu::StringPiece(tangled.data(), length32(tangled)));
    forEachCharacter(text, [&](const icu::UnicodeString& character) {
        const std::size_t start = key.text.size();
        appendFolded(key.text, character, turkic_);
        for (std::size_t at = start + 1; at < key.text.size(); ++at) {
            if (!U8_IS_TRAIL(key.text[at]))
                key.inside.push_back(at);
        }
    });
}

bool CaseFold::contains(const Key& key, const Key& query) {
    const std::string_view text = key.text;
    std::size_t at = text.find(query.text);
    while (at != std::string_view::npos) {
        if (isBoundary(key, at) && isBoundary(key, at + query.text.size()))
            return true;
        at = text.find(query.text, at + 1);
    }
    return false;
}

}  // namespace valdorn
