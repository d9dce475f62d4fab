#include "platform/posix/PosixSystemLog.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace valdorn {

namespace {

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

// Written by one call as far as the kernel lets us, so that lines of several threads do not mix.
void writeToStandardError(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            return;  // nobody is left to be told
    }
}

}  // namespace

PosixSystemLog::PosixSystemLog() {
    ::openlog("valdorn", LOG_PID, LOG_USER);
}

PosixSystemLog::~PosixSystemLog() {
    ::closelog();
}

void PosixSystemLog::write(std::string_view line) {
    std::string text(line);
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    ::syslog(LOG_USER | LOG_NOTICE, "%s", text.c_str());
    writeToStandardError(text + '\n');
}

}  // namespace valdorn
