#pragma once

#include <sys/types.h>

#include "platform/Result.h"
#include "platform/posix/Descriptor.h"

struct rlimit;

namespace valdorn {

struct BirthNote;

// Whom a new process runs, and with what. Everything is borrowed until it runs.
struct SpawnRequest {
    const char* executable = nullptr;
    char* const* arguments = nullptr;    // the name first, nullptr last, as exec wants them
    char* const* environment = nullptr;  // nullptr last
    const char* folder = nullptr;        // the working folder
    // Both above 2. `output` becomes standard output and standard error, `input` standard input; no
    // other descriptor is passed on.
    int input = -1;
    int output = -1;
    // The limits on core dumps; nullptr means ours.
    const rlimit* coreDumpLimit = nullptr;
    const BirthNote* birthNote = nullptr;  // written before the executable runs, if there is one
};

// A child that runs its executable.
struct SpawnedProcess {
    pid_t pid = -1;
    Descriptor process;  // a pidfd
};

// Why there is none.
struct SpawnFailure {
    enum class Step { create, enterFolder, execute };
    Step step = Step::create;
    int errorNumber = 0;
};

// Any thread; returns when the child runs its executable, and so waits for the disk where there is a
// birth note to write. The child has an empty signal mask, default
// dispositions and a group of its own. A failure leaves no child behind.
//
// posix_spawn would do the same, but does not say which step has failed, and whom its pid names is
// certain only until somebody else in this process waits for children: the pidfd is a call of its own.
Result<SpawnedProcess, SpawnFailure> spawnProcess(const SpawnRequest& request);

}  // namespace valdorn
