#pragma once

#include <string>
#include <string_view>

namespace valdorn {

// Finds text whatever its case, by the rules of a language and of Unicode.
//
// Texts are compared by their keys: full case folding (ß is like ss; in Turkish and Azerbaijani I
// goes with ı and İ with i) with canonically equal spellings made equal (é as one character or as e
// with a mark). Making a key costs; searching keys is a plain search of bytes. Immutable; any thread.
class CaseFold {
public:
    // `locale` as the environment names it ("tr_TR.UTF-8", "C", "de_DE@euro"); what is unknown or
    // empty folds by the common rules.
    explicit CaseFold(std::string_view locale);

    // The key of well-formed UTF-8; ill-formed bytes are taken as U+FFFD.
    std::string key(std::string_view text) const;

    // True when the text that has the key `key` contains the one that has `queryKey`, character by
    // perceived character: "e" is not found in "é". The empty query is contained in everything.
    static bool contains(std::string_view key, std::string_view queryKey);

private:
    bool turkic_;
};

}  // namespace valdorn
