#pragma once

#include <optional>

#include <sys/resource.h>

#include "platform/posix/BirthNote.h"

namespace valdorn {

// What children have beyond the promises of ChildLauncher.
struct ChildSettings {
    std::optional<rlimit> coreDumpLimit;  // nothing: the one that we have at their launch
    std::optional<BirthNote> birthNote;   // where they write down their birth
};

}  // namespace valdorn
