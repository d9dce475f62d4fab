#pragma once

#include "platform/posix/Descriptor.h"

namespace valdorn {

// For what the program cannot start without: throw std::system_error with the present errno, named
// after the call, when the call failed.

// Owns the descriptor that a call answered with, which is -1 after a failure.
Descriptor orThrow(int number, const char* call);
void requireSuccess(bool succeeded, const char* call);

}  // namespace valdorn
