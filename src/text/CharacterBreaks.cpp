#include "text/CharacterBreaks.h"

#include <cassert>
#include <new>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace valdorn {

namespace {

struct CloseText {
    void operator()(UText* text) const { utext_close(text); }
};

// Breaking characters needs ICU's own data, which is a part of its library: a failure can only
// mean that memory ran out.
void require(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::bad_alloc();
}

}  // namespace

struct CharacterBreaks::Walk {
    std::unique_ptr<UText, CloseText> source;
    std::unique_ptr<icu::BreakIterator> breaks;
};

CharacterBreaks::CharacterBreaks(std::string_view text) : walk_(std::make_unique<Walk>()) {
    assert(text.size() <= longestBytes);
    UErrorCode status = U_ZERO_ERROR;
    walk_->breaks.reset(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    require(status);
    walk_->source.reset(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
    require(status);
    walk_->breaks->setText(walk_->source.get(), status);
    require(status);
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
