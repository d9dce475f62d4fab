#include "DaemonLog.h"

namespace valdorn::demo {

void DaemonLog::entry(const LogLine& line) {
    if (line.level() >= level_) {
        output_.line(Stream::standardError, line.forDaemon(isDebug()));
    }
}

void DaemonLog::jobLine(const std::string& line) {
    if (isDebug()) {
        output_.line(Stream::standardOutput, line);
    }
}

void DaemonLog::fatal(const std::string& reason) {
    output_.line(Stream::standardError, "Error: " + reason);
}

}  // namespace valdorn::demo
