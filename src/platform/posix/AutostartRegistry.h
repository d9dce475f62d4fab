#pragma once

#include <string>

#include "platform/LoginItemRegistry.h"

namespace valdorn {

class DesktopEntry;
class FileSystem;
class HostInfo;

// The user's autostart folder: `autostart/org.valdorn.valdorn.desktop` below $XDG_CONFIG_HOME, or
// below ~/.config when that is unset or not absolute. Main thread only.
//
// Enabled means: the entry can be read, no line of it would make a strict desktop refuse it, it
// has an Exec, and neither Hidden nor X-GNOME-Autostart-enabled turns it off. OnlyShowIn and
// NotShowIn are not looked at: they choose among desktops, not whether the user wants the program,
// and the answer must be the same from a terminal, where no desktop is known.
//
// Registering sets Type, Name, Exec, Icon and Terminal. Hidden, X-GNOME-Autostart-enabled and
// TryExec are corrected where they stand and not added: without them an entry is on. All else in
// the file keeps its bytes and its place, but for lines that no desktop can read, which go.
//
// Unregistering deletes an entry in which there is nothing but what registering writes. When
// somebody has added to it (other keys, groups, comments), it stays and is turned off by
// Hidden=true, and by X-GNOME-Autostart-enabled=false where that key stands already.
//
// The entry is always replaced whole, so after a failure the old one stands.
class AutostartRegistry : public LoginItemRegistry {
public:
    // `files` outlives this. `executable`: absolute path of the program, see executablePath();
    // when it is empty, registering fails.
    AutostartRegistry(FileSystem& files, const HostInfo& host, std::string executable);

    LoginItemStatus status() const override;
    std::optional<std::string> registerItem() override;
    std::optional<std::string> unregisterItem() override;

    // Called at start-up. Points an enabled entry at our program, and changes nothing else, when it
    // starts a program that is gone from where it was, or another copy of ours: an upgrade may put
    // the new program elsewhere and leave the old one, which would then start at each login. True
    // when the entry was changed.
    //
    // A copy of ours is an absolute path without arguments, to a file that has our program's name and
    // is no script. All else that exists is the user's choice and stays: a wrapper, arguments, a bare
    // name that is looked up. When the disk refuses, the entry stands and the next start tries again.
    bool refreshMovedExecutable();

    // Where the entry stands.
    const std::string& entryPath() const { return path_; }

private:
    std::optional<std::string> write(const DesktopEntry& entry);
    bool startsACopyOfUs(const std::string& exec, const std::string& program) const;
    void pointAtUs(DesktopEntry& entry) const;

    FileSystem& files_;
    const std::string executable_;
    const std::string folder_;
    const std::string path_;
};

}  // namespace valdorn
