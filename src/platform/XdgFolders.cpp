#include "platform/XdgFolders.h"

#include "platform/Environment.h"
#include "platform/HostInfo.h"
#include "platform/Path.h"

namespace valdorn {

std::optional<std::string> XdgFolders::named(const std::vector<std::string>& environment,
                                             std::string_view variable) {
    auto folder = Environment::value(environment, variable);
    return folder && folder->starts_with('/') ? folder : std::nullopt;
}

std::string XdgFolders::configuration(const HostInfo& host) {
    if (auto folder = named(host.environment(), "XDG_CONFIG_HOME"))
        return *folder;
    return appendPathComponent(host.homeFolder(), ".config");
}

}  // namespace valdorn
