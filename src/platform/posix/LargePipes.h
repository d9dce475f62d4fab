#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace valdorn {

// Gives the pipes of a few children that flood more room, so that these run on while we are not
// scheduled. On a busy machine that takes a fifth off the time of a flood; a child that prints
// little gains nothing and is never asked for.
//
// The kernel counts the room against a limit that all programs of the user share (64 MiB by
// default), and beyond it makes every new pipe of theirs a tiny one. Hence so few of so many
// runners, and only those that need it.
//
// A pipe stays large until its child ends or another child needs the room. It does not become small
// each time that it is found empty: with a reader that keeps up that may be so after every chunk,
// also in the midst of a flood, and the kernel would be asked twice for each. One thread.
class LargePipes {
public:
    static constexpr std::size_t atMost = 4;
    static constexpr int largeBytes = 1024 * 1024;  // what the kernel allows everybody by default

    // Whose child has not flooded for so many askings of others may lose the room to one of them:
    // 4 MiB of their output and more. Children that flood at the same time ask by turns and never
    // come to that, so they do not take the room from each other to and fro.
    static constexpr std::uint64_t askingsUntilQuiet = 64;

    // To be asked for each chunk of a flood. Makes the pipe large if there is room for it and the
    // kernel allows it; otherwise it stays as it is.
    void enlarge(const Descriptor& pipe);

    // The pipe is about to be closed; harmless for one that is none or not large.
    void forget(const Descriptor& pipe);

private:
    struct Large {
        int number;               // the descriptor's
        int formerBytes;          // the pipe's size before
        std::uint64_t lastAsked;  // as counted by askings_
    };

    bool noteAsking(int number);
    bool isThereRoom();

    std::vector<Large> large_;
    std::uint64_t askings_ = 0;
};

}  // namespace valdorn
