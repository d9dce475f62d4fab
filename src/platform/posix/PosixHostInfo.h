#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/HostInfo.h"

namespace valdorn {

// Where the host's facts are found.
struct HostSources {
    // The file in which the owner's own spelling of the computer's name stands.
    std::string machineInfoFile;
    // The kernel's name for the computer; empty when it has none.
    std::function<std::string()> hostName;
    // The home folder in the account database; empty when there is no such account.
    std::function<std::string()> accountHome;

    // This computer's: /etc/machine-info, gethostname, getpwuid_r.
    static HostSources ofThisComputer();
};

// The computer and the account from the environment, the account database and the kernel.
//
// Home folder: $HOME, else the account's. When neither is an absolute path, construction prints
// one line on standard error and aborts: there is no place for any file of ours.
// Computer name: PRETTY_HOSTNAME of the machine-info file, else the host name, unless that only
// says that the computer has none ("localhost", "(none)").
//
// Environment: as the process was started with it. Libraries of ours change the process's own while
// other threads may read it, which no lock could make safe.
class PosixHostInfo : public HostInfo {
public:
    explicit PosixHostInfo(const HostSources& sources = HostSources::ofThisComputer());

    std::string homeFolder() const override { return homeFolder_; }
    std::optional<std::string> computerName() const override { return computerName_; }
    std::vector<std::string> environment() const override { return environment_; }

private:
    const std::string homeFolder_;
    const std::optional<std::string> computerName_;
    const std::vector<std::string> environment_;
};

}  // namespace valdorn
