#pragma once

#include <string>
#include <utility>

#include "platform/Result.h"
#include "platform/posix/Descriptor.h"

namespace valdorn {

// Why this instance does not hold the lock.
struct LockRefusal {
    enum class Kind {
        held,    // by another running instance, or by this one already
        failed,  // it cannot be known: the file cannot be made or locked
    };
    Kind kind = Kind::failed;
    std::string description;  // one readable line
    bool isShortage = false;  // of the kernel's: the next try may succeed
};

// Held by the one instance that serves a home folder; movable, given back by destruction or the
// end of the process, however it ends. One thread at a time.
//
// The lock is the kernel's, not the file's existence: a file left by a killed instance is no
// obstacle, and the file is never removed (a third instance could lock a new one while the second
// locks the old). Children do not inherit it.
class InstanceLock {
public:
    // Any thread. Never waits. The folder of `path` exists.
    static Result<InstanceLock, LockRefusal> acquire(const std::string& path);

private:
    explicit InstanceLock(Descriptor file) : file_(std::move(file)) {}

    Descriptor file_;
};

}  // namespace valdorn
