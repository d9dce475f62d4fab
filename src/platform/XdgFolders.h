#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

class HostInfo;

// The freedesktop base folders, from the environment. Pure; any thread.
namespace XdgFolders {

// The folder that the environment ("NAME=value") names in the variable; nothing when it is unset,
// or not absolute: the base folder rules say to ignore it then.
std::optional<std::string> named(const std::vector<std::string>& environment,
                                 std::string_view variable);

// Where the user's settings are: $XDG_CONFIG_HOME, by default .config in the home folder.
std::string configuration(const HostInfo& host);

}  // namespace XdgFolders

}  // namespace valdorn
