#pragma once

#include "FailingCalls.h"

namespace valdorn::failing {

// What is to become of the call that is being made.
struct Verdict {
    bool fails = false;
    Failure failure{};
};

// Counts the call.
Verdict consult(Call call);

bool isLookedAt();

}  // namespace valdorn::failing
