#pragma once

#include <string>

namespace valdorn {

class HostInfo;

// Where the upstream project publishes the releases of the runner: a Gitea instance's base URL.
// Pure; any thread.
namespace ReleaseService {

// The instance this program was built for (VALDORN_RELEASE_SERVICE at configuration).
std::string builtIn();

// What the environment variable VALDORN_RELEASE_SERVICE says, as it is, so that a mirror can be
// asked instead; the built-in one when it is unset or empty.
std::string baseUrl(const HostInfo& host);

}  // namespace ReleaseService

}  // namespace valdorn
