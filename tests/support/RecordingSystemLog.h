#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/SystemLog.h"

namespace valdorn {

// Keeps what was logged. One thread only.
class RecordingSystemLog : public SystemLog {
public:
    std::vector<std::string> lines;

    void write(std::string_view line) override { lines.emplace_back(line); }
};

}  // namespace valdorn
