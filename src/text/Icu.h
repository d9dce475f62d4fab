#pragma once

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/utypes.h>

namespace valdorn::Icu {

// What the text folder needs of ICU more than once. For its .cpp files only: nobody else has to know
// who answers for Unicode. Any thread.

// All that is asked of ICU here needs only data that is a part of its library: a failure can only
// mean that memory ran out, and is thrown as such.
void require(UErrorCode status);

// An iterator over user-perceived characters, the same in every language. It is made from one that
// is kept, which is a tenth of the work of making one from nothing.
std::unique_ptr<icu::BreakIterator> characterBreaks();

}  // namespace valdorn::Icu
