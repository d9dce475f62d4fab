#pragma once

#include <optional>
#include <string>

namespace valdorn {

// Files that are shipped with the program. Any thread.
class BundleResources {
public:
    BundleResources() = default;
    BundleResources(const BundleResources&) = delete;
    BundleResources& operator=(const BundleResources&) = delete;
    virtual ~BundleResources() = default;

    // Absolute path of the resource of that name, or nothing when it was not shipped. Looked up
    // afresh on each call: a resource may be added or removed by an upgrade while we run.
    virtual std::optional<std::string> path(const std::string& name) const = 0;
};

}  // namespace valdorn
