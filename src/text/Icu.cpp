#include "text/Icu.h"

#include <new>

namespace valdorn::Icu {

void require(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::bad_alloc();
}

std::unique_ptr<icu::BreakIterator> characterBreaks() {
    static const std::unique_ptr<const icu::BreakIterator> pattern = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<const icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        require(status);
        return made;
    }();
    std::unique_ptr<icu::BreakIterator> breaks(pattern->clone());
    if (!breaks)
        throw std::bad_alloc();
    return breaks;
}

}  // namespace valdorn::Icu
