#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SystemLog.h"

namespace valdorn {

// Keeps what was logged. Any thread may write; the lines are read when no other thread does.
class RecordingSystemLog : public SystemLog {
public:
    std::vector<std::string> lines;

    void write(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        lines.emplace_back(line);
    }

private:
    std::mutex mutex_;
};

}  // namespace valdorn
