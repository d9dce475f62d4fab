#include <gtest/gtest.h>

#include "platform/XdgFolders.h"
#include "support/FixedHostInfo.h"

namespace valdorn {
namespace {

TEST(XdgFolders, AreWhatTheEnvironmentSays) {
    FixedHostInfo host;
    host.variables = {"XDG_CONFIG_HOME_X=/no", "XDG_CONFIG_HOME=/settings", "A=b"};
    EXPECT_EQ(XdgFolders::configuration(host), "/settings");
    EXPECT_EQ(XdgFolders::named(host.variables, "XDG_CONFIG_HOME"), "/settings");
    EXPECT_EQ(XdgFolders::named(host.variables, "XDG_STATE_HOME"), std::nullopt);
}

TEST(XdgFolders, RelativeOrEmptyOnesAreIgnored) {
    FixedHostInfo host;
    for (const char* value : {"XDG_CONFIG_HOME=", "XDG_CONFIG_HOME=settings"}) {
        host.variables = {value};
        EXPECT_EQ(XdgFolders::configuration(host), "/home/ada/.config");
    }
}

TEST(XdgFolders, SettingsStandBelowHomeByDefault) {
    EXPECT_EQ(XdgFolders::configuration(FixedHostInfo{}), "/home/ada/.config");
}

}  // namespace
}  // namespace valdorn
