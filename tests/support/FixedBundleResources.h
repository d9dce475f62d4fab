#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/BundleResources.h"

namespace valdorn {

// Ships what the test puts into the map; nothing at first.
class FixedBundleResources : public BundleResources {
public:
    std::map<std::string, std::string> paths;  // by resource name

    std::optional<std::string> path(const std::string& name) const override {
        if (const auto found = paths.find(name); found != paths.end())
            return found->second;
        return std::nullopt;
    }
};

}  // namespace valdorn
