#include "text/CharacterBreaks.h"

#include <cassert>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include "text/Icu.h"

namespace valdorn {

namespace {

struct CloseText {
    void operator()(UText* text) const { utext_close(text); }
};

}  // namespace

struct CharacterBreaks::Walk {
    std::unique_ptr<UText, CloseText> source;
    std::unique_ptr<icu::BreakIterator> breaks;
};

CharacterBreaks::CharacterBreaks(std::string_view text) : walk_(std::make_unique<Walk>()) {
    assert(text.size() <= longestBytes);
    walk_->breaks = Icu::characterBreaks();
    UErrorCode status = U_ZERO_ERROR;
    walk_->source.reset(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
    Icu::require(status);
    walk_->breaks->setText(walk_->source.get(), status);
    Icu::require(status);
}

CharacterBreaks::~CharacterBreaks() = default;

std::size_t CharacterBreaks::next() {
    walk_->breaks->next();
    return static_cast<std::size_t>(walk_->breaks->current());
}

std::size_t CharacterBreaks::previous() {
    walk_->breaks->previous();
    return static_cast<std::size_t>(walk_->breaks->current());
}

std::size_t CharacterBreaks::last() {
    return static_cast<std::size_t>(walk_->breaks->last());
}

}  // namespace valdorn
