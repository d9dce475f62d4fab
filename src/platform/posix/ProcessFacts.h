#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace valdorn {

// What tells one process from any other on this computer, the kernel's answers as they are.
struct ProcessFacts {
    pid_t pid = 0;
    std::uint64_t startTicks = 0;  // clock ticks between the boot and its start
    uid_t owner = 0;
    std::string executable;     // for a script its interpreter
    std::string workingFolder;  // of the moment of asking

    // True when both have one id, one owner and one time of birth: within one boot that is one
    // process, whatever program it has become since.
    bool hasSameBirthAs(const ProcessFacts& other) const;

    // True when both are the same process beyond doubt. An executable or a folder that was
    // replaced or removed since counts as itself.
    bool isSameProcessAs(const ProcessFacts& other) const;

    friend bool operator==(const ProcessFacts&, const ProcessFacts&) = default;
};

// Any thread. The facts about a process, or nothing when it has ended or is not ours to look at.
std::optional<ProcessFacts> factsAbout(pid_t pid);

// Any thread. The same without executable and folder, for anybody's process.
std::optional<ProcessFacts> birthOf(pid_t pid);

// Any thread. Field 22 of a text as in /proc/PID/stat; nothing when there is none.
std::optional<std::uint64_t> startTicksIn(const std::string& stat);

// Any thread. Names the present boot of this computer: process ids and start times mean something
// only within one. Empty when the kernel does not tell.
std::string bootId();

}  // namespace valdorn
