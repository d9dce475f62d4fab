#pragma once

#include <cstddef>

#include "platform/posix/Descriptor.h"

namespace valdorn {

// Gives the pipes of a few children that flood more room, so that these run on while we are not
// scheduled. On a busy machine that takes a fifth off the time of a flood; a child that prints
// little gains nothing and is never asked for.
//
// The kernel counts the room against a limit that all programs of the user share (64 MiB by
// default), and beyond it makes every new pipe of theirs a tiny one. Hence so few of so many
// runners, and only those that need it. One thread.
class LargePipes {
public:
    static constexpr int atMost = 4;
    static constexpr int largeBytes = 1024 * 1024;  // what the kernel allows everybody by default

    // True when the pipe has become large; it counts until giveBack(). False when there are enough
    // already or the kernel refuses, and then it stays as it was.
    bool enlarge(const Descriptor& pipe);

    // One of them is closed.
    void giveBack() { --count_; }

private:
    int count_ = 0;
};

}  // namespace valdorn
