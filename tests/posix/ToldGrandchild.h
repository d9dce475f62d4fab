#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace valdorn {

// The id that a child has told of with "grandchild ID". Throws where there is none: to kill(), 0 and
// less are whole crowds of processes.
inline pid_t toldGrandchild(const std::string& output) {
    const std::string mark = "grandchild ";
    const auto at = output.find(mark);
    const long id =
        at == std::string::npos ? 0 : std::strtol(output.c_str() + at + mark.size(), nullptr, 10);
    if (id <= 1)
        throw std::runtime_error("no grandchild is told of");
    return static_cast<pid_t>(id);
}

}  // namespace valdorn
