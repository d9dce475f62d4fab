#include "update/ReleaseService.h"

#include "platform/Environment.h"
#include "platform/HostInfo.h"

namespace valdorn {

std::string ReleaseService::builtIn() {
    return VALDORN_RELEASE_SERVICE;
}

std::string ReleaseService::baseUrl(const HostInfo& host) {
    return Environment::value(host.environment(), "VALDORN_RELEASE_SERVICE").value_or(builtIn());
}

}  // namespace valdorn
