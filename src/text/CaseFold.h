#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// Finds text whatever its case, by the rules of a language and of Unicode.
//
// Texts are compared by their keys: full case folding (ß is like ss; in Turkish and Azerbaijani I
// goes with ı and İ with i) with canonically equal spellings made equal (é as one character or as e
// with a mark). Making a key costs; searching keys is a plain search of bytes. Immutable; any thread.
class CaseFold {
public:
    // A text as it is compared.
    struct Key {
        std::string text;  // folded, decomposed, well-formed UTF-8

        // Where in `text` a code point begins that goes on with a perceived character of the
        // original: at a mark, or within what a ligature has become. Ascending. What is inside a
        // CR LF pair is not listed: it can be seen.
        std::vector<std::size_t> inside;
    };

    // `locale` as the environment names it ("tr_TR.UTF-8", "C", "de_DE@euro"); what is unknown or
    // empty folds by the common rules.
    explicit CaseFold(std::string_view locale);

    // What is looked at of a text at the most: all that ICU can address.
    static constexpr std::size_t searchedBytes = std::numeric_limits<std::int32_t>::max();

    // The key of UTF-8; ill-formed bytes are taken as U+FFFD.
    Key key(std::string_view text) const;

    // True when the text of `key` contains the one of `query`, perceived character by perceived
    // character: "e" is not found in "é", nor "s" in "ß". The empty query is contained in everything.
    static bool contains(const Key& key, const Key& query);

private:
    void appendPlain(Key& key, std::string_view plain) const;
    void appendTangled(Key& key, std::string_view tangled) const;

    bool turkic_;
};

}  // namespace valdorn
