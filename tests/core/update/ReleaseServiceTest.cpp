#include <gtest/gtest.h>

#include "support/FixedHostInfo.h"
#include "update/ReleaseService.h"

namespace valdorn {
namespace {

class ReleaseServiceTest : public testing::Test {
protected:
    std::string baseUrl() const { return ReleaseService::baseUrl(host); }

    FixedHostInfo host;
};

TEST_F(ReleaseServiceTest, TheBuiltInServiceIsAskedOverTls) {
    EXPECT_TRUE(ReleaseService::builtIn().starts_with("https://"));
    EXPECT_GT(ReleaseService::builtIn().size(), std::string("https://").size());
}

TEST_F(ReleaseServiceTest, WithoutAWordOfTheEnvironmentItIsTheBuiltInOne) {
    EXPECT_EQ(baseUrl(), ReleaseService::builtIn());
    host.variables = {"HOME=/home/ada", "XVALDORN_RELEASE_SERVICE=http://x",
                      "VALDORN_RELEASE_SERVICES=http://y"};
    EXPECT_EQ(baseUrl(), ReleaseService::builtIn());
}

TEST_F(ReleaseServiceTest, TheEnvironmentReplacesIt) {
    host.variables = {"HOME=/home/ada", "VALDORN_RELEASE_SERVICE=http://mirror:3000/a=b/"};
    EXPECT_EQ(baseUrl(), "http://mirror:3000/a=b/");
}

TEST_F(ReleaseServiceTest, AnEmptyVariableIsAsGoodAsNone) {
    host.variables = {"VALDORN_RELEASE_SERVICE="};
    EXPECT_EQ(baseUrl(), ReleaseService::builtIn());
}

}  // namespace
}  // namespace valdorn
