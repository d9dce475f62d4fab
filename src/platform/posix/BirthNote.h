#pragma once

#include <optional>
#include <string>

#include "platform/posix/ProcessFacts.h"

namespace valdorn {

// What a child writes down of itself before it runs its executable. Whoever launches it learns its id
// only when it runs already; if that program is killed in between, nobody else knows of the child.
//
// The text: a line "boot BOOT-ID", and the child's /proc/PID/stat.
struct BirthNote {
    std::string path;
    std::string heading;  // the first line

    // For children of this boot.
    static BirthNote at(std::string path);
};

// Any thread. The process that has written the text, if it lives, in this boot, and is this user's.
std::optional<ProcessFacts> livingProcessOf(const std::string& birthNote);

}  // namespace valdorn
