#pragma once

#include <string_view>

namespace valdorn {

// The system's log, for the few things that no window can tell. Any thread; never fails.
class SystemLog {
public:
    SystemLog() = default;
    SystemLog(const SystemLog&) = delete;
    SystemLog& operator=(const SystemLog&) = delete;
    virtual ~SystemLog() = default;

    // Writes one line (given without a line end) to the system log and to standard error.
    virtual void write(std::string_view line) = 0;
};

}  // namespace valdorn
