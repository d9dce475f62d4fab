#pragma once

#include "platform/SystemLog.h"

namespace valdorn {

// syslog as "valdorn" (facility user, priority notice), and standard error.
//
// A line that reaches us with line ends or other control characters in it is still one line: they
// become blanks. One object at a time: the C library has one log per process.
class PosixSystemLog : public SystemLog {
public:
    PosixSystemLog();
    ~PosixSystemLog() override;

    void write(std::string_view line) override;
};

}  // namespace valdorn
