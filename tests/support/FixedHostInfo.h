#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/HostInfo.h"

namespace valdorn {

// A host that is what the test says.
class FixedHostInfo : public HostInfo {
public:
    std::string home = "/home/ada";
    std::optional<std::string> name;
    std::vector<std::string> variables;  // "NAME=value"

    std::string homeFolder() const override { return home; }
    std::optional<std::string> computerName() const override { return name; }
    std::vector<std::string> environment() const override { return variables; }
};

}  // namespace valdorn
