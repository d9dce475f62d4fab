#pragma once

#include <string>

namespace valdorn {

// The page of the system's settings on which local networks are allowed, as macOS calls it.
inline constexpr char localNetworkSettings[] =
    "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_LocalNetwork";

// Opens things with the desktop's own programs. Main thread only; returns without waiting for the
// other program. False means that the desktop has nothing to open it with.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    // Opens a file, by absolute path, with its default program.
    virtual bool openFile(const std::string& path) = 0;

    // Opens a URL with the program for its scheme; text without a scheme is opened by nothing. A
    // link to the system's settings, as the one above, opens what comes closest on this desktop.
    virtual bool openUrl(const std::string& url) = 0;
};

}  // namespace valdorn
