#pragma once

#include <string>
#include <vector>

#include "platform/Workspace.h"

namespace valdorn {

class HostInfo;

// Opens things the way the desktop does (its portal, or xdg-open). Links to a page of the system's
// settings ("x-apple.systempreferences:") have no such program here: each of them opens the
// desktop's own network settings, see NetworkSettings.
class QtWorkspace : public Workspace {
public:
    // Looks at the environment now; `host` need not live on.
    explicit QtWorkspace(const HostInfo& host);

    bool openFile(const std::string& path) override;
    // A program for settings is on its own from the start: it outlives us, and nothing that it
    // prints comes to us. False also where none of the programs is there.
    bool openUrl(const std::string& url) override;

private:
    bool openNetworkSettings() const;

    const std::vector<std::string> environment_;
    const std::string home_;
};

}  // namespace valdorn
