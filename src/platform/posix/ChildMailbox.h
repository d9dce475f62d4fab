#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace valdorn {

// Names a child among all that one launcher ever started. Never used twice.
using ChildKey = std::uint64_t;

// What other threads have to tell the thread that reads the children. Any thread; shared, because
// output that is still held may be let go of after the launcher is gone.
class ChildMailbox {
public:
    // Throws std::system_error when the kernel has no descriptor to give: the program cannot work.
    ChildMailbox();

    // Something about that child may have changed.
    void lookAt(ChildKey child);

    // The reading thread is to return.
    void stop();

    // For the reader: becomes readable when there is something to take().
    int number() const { return wakeUp_.number(); }

    struct Letters {
        std::vector<ChildKey> children;
        bool isStopping = false;
    };

    // For the reader: everything told since the last call. A stop stays told.
    Letters take();

private:
    void wake();

    const Descriptor wakeUp_;  // an eventfd
    std::mutex mutex_;
    Letters letters_;  // guarded by mutex_
};

}  // namespace valdorn
