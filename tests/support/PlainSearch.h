#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace valdorn {

// What a search is: some perceived characters in a row that fold to what the query folds to.
class PlainSearch {
public:
    explicit PlainSearch(bool isTurkic) : isTurkic_(isTurkic) {}

    bool finds(const std::string& text, const std::string& query) {
        const icu::UnicodeString whole = icu::UnicodeString::fromUTF8(text);
        const icu::UnicodeString wanted = folded(icu::UnicodeString::fromUTF8(query));
        std::vector<std::int32_t> places{0};
        breaks_->setText(whole);
        while (breaks_->next() != icu::BreakIterator::DONE)
            places.push_back(breaks_->current());
        for (std::size_t from = 0; from < places.size(); ++from) {
            for (std::size_t to = from; to < places.size(); ++to) {
                if (folded(whole.tempSubStringBetween(places[from], places[to])) == wanted)
                    return true;
            }
        }
        return false;
    }

private:
    icu::UnicodeString folded(const icu::UnicodeString& text) {
        const auto* const before = isTurkic_ ? icu::Normalizer2::getNFCInstance(status_)
                                             : icu::Normalizer2::getNFDInstance(status_);
        icu::UnicodeString result = before->normalize(text, status_);
        result.foldCase(isTurkic_ ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
        return icu::Normalizer2::getNFDInstance(status_)->normalize(result, status_);
    }

    bool isTurkic_;
    UErrorCode status_ = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> breaks_{
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status_)};
};

}  // namespace valdorn
