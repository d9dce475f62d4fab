#pragma once

#include <string>
#include <vector>

#include "logs/LogLine.h"

namespace valdorn {

// What stands in the lines.
inline std::vector<std::string> texts(const LogLines& lines) {
    std::vector<std::string> all;
    all.reserve(lines.size());
    for (const LogLine& line : lines)
        all.emplace_back(*line);
    return all;
}

}  // namespace valdorn
