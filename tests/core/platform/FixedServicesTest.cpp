#include <gtest/gtest.h>

#include "contracts/BundleResourcesContract.h"
#include "contracts/HostInfoContract.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"

namespace valdorn {
namespace {

class FixedResourcesFixture {
public:
    BundleResources& resources() { return resources_; }
    std::string ship(const std::string& name) {
        return resources_.paths[name] = "/opt/valdorn/" + name;
    }
    void withdraw(const std::string& name) { resources_.paths.erase(name); }

private:
    FixedBundleResources resources_;
};

class FixedHostFixture {
public:
    void setHome(const std::string& path) { host_.home = path; }
    void setName(const std::optional<std::string>& name) { host_.name = name; }
    void setVariable(const std::string& name, const std::string& value) {
        host_.variables.push_back(name + "=" + value);
    }
    HostInfo& host() { return host_; }

private:
    FixedHostInfo host_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fixed, BundleResourcesContract, FixedResourcesFixture);
INSTANTIATE_TYPED_TEST_SUITE_P(Fixed, HostInfoContract, FixedHostFixture);

}  // namespace
}  // namespace valdorn
