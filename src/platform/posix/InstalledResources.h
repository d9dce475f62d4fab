#pragma once

#include <string>
#include <vector>

#include "platform/BundleResources.h"

namespace valdorn {

// Resources where the executable was put. The first place that holds a file of the name wins:
//   <folder of the executable>/resources/NAME   a development build
//   <prefix>/lib/valdorn/NAME                   when the executable is <prefix>/bin/...
// An unknown executable (an empty path) has no resources.
class InstalledResources : public BundleResources {
public:
    // `executable`: absolute path of the program, see executablePath().
    explicit InstalledResources(const std::string& executable);

    std::optional<std::string> path(const std::string& name) const override;

private:
    std::vector<std::string> folders_;  // constant after construction
};

}  // namespace valdorn
