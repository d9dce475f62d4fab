#pragma once

#include <optional>
#include <string>
#include <vector>

namespace valdorn {

// The computer and the account that we run on. Any thread; the answers are those of the moment of
// construction.
class HostInfo {
public:
    HostInfo() = default;
    HostInfo(const HostInfo&) = delete;
    HostInfo& operator=(const HostInfo&) = delete;
    virtual ~HostInfo() = default;

    // The home folder ($HOME), absolute, without a trailing slash.
    virtual std::string homeFolder() const = 0;

    // The computer's name as its owner wrote it, or nothing when it has none.
    virtual std::optional<std::string> computerName() const = 0;

    // The environment that this process was started with, "NAME=value" each, in its own order.
    virtual std::vector<std::string> environment() const = 0;
};

}  // namespace valdorn
