#include "platform/XdgFolders.h"

#include "platform/HostInfo.h"
#include "platform/Path.h"

namespace valdorn {

std::optional<std::string> XdgFolders::named(const std::vector<std::string>& environment,
                                             std::string_view variable) {
    const std::string start = std::string(variable) + "=";
    for (const std::string& entry : environment) {
        if (entry.starts_with(start + "/"))
            return entry.substr(start.size());
    }
    return std::nullopt;
}

std::string XdgFolders::configuration(const HostInfo& host) {
    if (auto folder = named(host.environment(), "XDG_CONFIG_HOME"))
        return *folder;
    return appendPathComponent(host.homeFolder(), ".config");
}

}  // namespace valdorn
