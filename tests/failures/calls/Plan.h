#pragma once

#include "failures/calls/FailingCalls.h"

namespace valdorn::failing {

// What is to become of the call that is being made.
struct Verdict {
    bool fails = false;
    Failure failure{};
};

// Counts the call that is made from there.
Verdict consult(Call call, const void* caller);

// From here on only what is called from there is looked at.
void lookOnlyAt(const void* begin, const void* end);

// Counts and tells there as well: one number for each call, and whether the first fault has come.
void reportIn(unsigned* numbers);

bool isLookedAt();

}  // namespace valdorn::failing
