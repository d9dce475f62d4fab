#pragma once

#include <sys/types.h>

#include "platform/Result.h"
#include "platform/posix/Descriptor.h"

namespace valdorn {

// Whom a new process runs, and with what. Everything is borrowed until it runs.
struct ChildBirth {
    const char* executable;
    char* const* arguments;    // the name first, nullptr last, as exec wants them
    char* const* environment;  // nullptr last
    // All three above 2. `output` becomes standard output and standard error, `input` standard
    // input, `folder` (a descriptor of a folder) the working folder; no other descriptor is passed on.
    int input;
    int output;
    int folder;
};

// A child that runs its executable.
struct Newborn {
    pid_t pid;
    Descriptor process;  // a pidfd
};

// Why there is none.
struct BirthFailure {
    enum class Step { create, enterFolder, execute };
    Step step = Step::create;
    int errorNumber = 0;
};

// Any thread; returns when the child runs its executable. It has an empty signal mask, default
// dispositions and a group of its own. A failure leaves no child behind.
//
// posix_spawn would do the same, but not as fast (bench/launching.py): it maps a stack and gives it
// back, of which the processors of all other threads are told. Nor does it say which step has
// failed, and the pidfd is a call of its own.
Result<Newborn, BirthFailure> giveBirth(const ChildBirth& birth);

}  // namespace valdorn
