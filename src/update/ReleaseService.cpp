#include "update/ReleaseService.h"

#include <string_view>

#include "platform/HostInfo.h"

namespace valdorn {

std::string ReleaseService::builtIn() {
    return VALDORN_RELEASE_SERVICE;
}

std::string ReleaseService::baseUrl(const HostInfo& host) {
    constexpr std::string_view name = "VALDORN_RELEASE_SERVICE=";
    for (const std::string& entry : host.environment()) {
        if (entry.starts_with(name) && entry.size() > name.size())
            return entry.substr(name.size());
    }
    return builtIn();
}

}  // namespace valdorn
