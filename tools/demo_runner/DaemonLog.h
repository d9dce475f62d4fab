#pragma once

#include <string>

#include "LogLine.h"
#include "Output.h"

namespace valdorn::demo {

// Prints what a daemon prints, in the form of its log level. At level debug entries carry their
// caller and jobs are told line by line; at level info neither.
class DaemonLog {
public:
    DaemonLog(Output& output, Level level) : output_(output), level_(level) {}

    bool isDebug() const { return level_ == Level::debug; }

    void entry(const LogLine& line);        // structured, on standard error; when the level allows
    void jobLine(const std::string& line);  // on standard output; at level debug only
    void fatal(const std::string& reason);  // "Error: reason"

private:
    Output& output_;
    const Level level_;
};

}  // namespace valdorn::demo
