#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/HostInfo.h"

namespace valdorn {

// What every HostInfo does. The fixture has:
//   void setHome(const std::string& path);
//   void setName(const std::optional<std::string>& name);
//   void setVariable(const std::string& name, const std::string& value);  // in the environment
//   HostInfo& host();  // made at the first call, after the scene has been set
template <typename Fixture>
class HostInfoContract : public testing::Test {
protected:
    Fixture fixture;
};

TYPED_TEST_SUITE_P(HostInfoContract);

TYPED_TEST_P(HostInfoContract, TellsTheHomeFolder) {
    this->fixture.setHome("/home/zoë and co");
    EXPECT_EQ(this->fixture.host().homeFolder(), "/home/zoë and co");
}

TYPED_TEST_P(HostInfoContract, TellsTheComputersNameAsItIsWritten) {
    this->fixture.setName("Ada's Büro \"Mini\"");
    EXPECT_EQ(this->fixture.host().computerName(), "Ada's Büro \"Mini\"");
}

TYPED_TEST_P(HostInfoContract, AComputerMayHaveNoName) {
    this->fixture.setName(std::nullopt);
    EXPECT_EQ(this->fixture.host().computerName(), std::nullopt);
}

TYPED_TEST_P(HostInfoContract, TellsTheEnvironment) {
    this->fixture.setVariable("VALDORN_TEST_FIRST", "a=b");
    this->fixture.setVariable("VALDORN_TEST_SECOND", "");
    const auto holds = [this](const std::string& wanted) {
        for (const std::string& variable : this->fixture.host().environment()) {
            if (variable == wanted)
                return true;
        }
        return false;
    };
    EXPECT_TRUE(holds("VALDORN_TEST_FIRST=a=b"));
    EXPECT_TRUE(holds("VALDORN_TEST_SECOND="));
    EXPECT_FALSE(holds("VALDORN_TEST_THIRD="));
}

REGISTER_TYPED_TEST_SUITE_P(HostInfoContract, TellsTheHomeFolder,
                            TellsTheComputersNameAsItIsWritten, AComputerMayHaveNoName,
                            TellsTheEnvironment);

}  // namespace valdorn
