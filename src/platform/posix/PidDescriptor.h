#pragma once

#include <mutex>
#include <optional>

#include <sys/types.h>

#include "platform/ChildLauncher.h"
#include "platform/posix/Descriptor.h"

namespace valdorn {

// Refers to one process through a pidfd, which can never come to mean a stranger. Any thread, at
// the same time as others. Destruction closes the descriptor and leaves the process alone.
class PidDescriptor {
public:
    // Opens `pid`: a child of ours that is not reaped yet, or any process. errno on failure.
    static Result<Descriptor, int> open(pid_t pid);

    PidDescriptor(pid_t pid, Descriptor descriptor);

    pid_t pid() const { return pid_; }

    // False from the moment at which the process has ended, reaped or not.
    bool isRunning() const;

    // Sends the signal unless the process has been reaped. False when it could not be sent.
    bool send(int signal) const;

    // For a child of ours: how it ended, once, after which it is reaped and the descriptor closed.
    // Nothing while it runs and after it was reaped here. Never blocks.
    std::optional<ChildExit> reap();

    // For waiting on it; valid until reap() has answered. -1 after that.
    int number() const;

private:
    const pid_t pid_;
    mutable std::mutex mutex_;
    Descriptor descriptor_;  // guarded by mutex_; empty once reaped
};

}  // namespace valdorn
