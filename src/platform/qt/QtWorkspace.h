#pragma once

#include "platform/Workspace.h"

namespace valdorn {

// Opens things the way the desktop does (its portal, or xdg-open).
class QtWorkspace : public Workspace {
public:
    bool openFile(const std::string& path) override;
    bool openUrl(const std::string& url) override;
};

}  // namespace valdorn
