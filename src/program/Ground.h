#pragma once

#include <string>

#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/CoreDumpLimit.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/PosixSystemLog.h"
#include "platform/posix/SessionBusSocket.h"
#include "platform/posix/StarterMarks.h"

namespace valdorn {

// What the program stands on before there is a display. One per process, for its whole life; made
// on the main thread before any other exists, because it takes the starter's marks out of the
// environment, which the children would inherit.
struct Ground {
    CoreDumpLimit coreDumpLimit;
    bool isStartedByBus = StarterMarks::takeSessionBus();
    std::string activationToken = StarterMarks::takeActivationToken();
    PosixFileSystem files;
    PosixHostInfo host;
    std::string sessionBus = SessionBusSocket::address(host.environment());
    bool isQtKeptFromBus = false;  // see SilentBusGuard
    std::string executable = executablePath();
    AutostartRegistry loginItems{files, host, executable};
    PosixSystemLog log;
};

}  // namespace valdorn
