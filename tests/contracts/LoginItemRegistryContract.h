#pragma once

#include <gtest/gtest.h>

#include "platform/LoginItemRegistry.h"

namespace valdorn {

// What every LoginItemRegistry does. The fixture has:
//   LoginItemRegistry& registry();  // nothing is registered at first
//   void refuseChanges();           // from now on every change fails; reading goes on
//   void reopen();                  // registry() is another object over the same registry
template <typename Fixture>
class LoginItemRegistryContract : public testing::Test {
protected:
    LoginItemRegistry& registry() { return fixture_.registry(); }
    void refuseChanges() { fixture_.refuseChanges(); }
    void reopen() { fixture_.reopen(); }

private:
    Fixture fixture_;
};

TYPED_TEST_SUITE_P(LoginItemRegistryContract);

TYPED_TEST_P(LoginItemRegistryContract, IsNotEnabledAtFirst) {
    EXPECT_EQ(this->registry().status(), LoginItemStatus::notEnabled);
}

TYPED_TEST_P(LoginItemRegistryContract, RegistersAndUnregisters) {
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
    EXPECT_EQ(this->registry().unregisterItem(), std::nullopt);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::notEnabled);
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
}

TYPED_TEST_P(LoginItemRegistryContract, RegisteringAgainIsNoError) {
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
}

TYPED_TEST_P(LoginItemRegistryContract, UnregisteringWhatIsNotRegisteredIsNoError) {
    EXPECT_EQ(this->registry().unregisterItem(), std::nullopt);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::notEnabled);
}

TYPED_TEST_P(LoginItemRegistryContract, TheRegistryOutlivesTheObject) {
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    this->reopen();
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
}

TYPED_TEST_P(LoginItemRegistryContract, ARefusedRegistrationGivesOneReadableLine) {
    this->refuseChanges();
    const auto reason = this->registry().registerItem();
    ASSERT_TRUE(reason);
    EXPECT_FALSE(reason->empty());
    EXPECT_EQ(reason->find('\n'), std::string::npos);
    EXPECT_EQ(this->registry().status(), LoginItemStatus::notEnabled);
}

TYPED_TEST_P(LoginItemRegistryContract, AfterARefusalTheOldEntryStands) {
    EXPECT_EQ(this->registry().registerItem(), std::nullopt);
    this->refuseChanges();
    EXPECT_TRUE(this->registry().registerItem());
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
    EXPECT_TRUE(this->registry().unregisterItem());
    EXPECT_EQ(this->registry().status(), LoginItemStatus::enabled);
}

REGISTER_TYPED_TEST_SUITE_P(LoginItemRegistryContract, IsNotEnabledAtFirst, RegistersAndUnregisters,
                            RegisteringAgainIsNoError, UnregisteringWhatIsNotRegisteredIsNoError,
                            TheRegistryOutlivesTheObject, ARefusedRegistrationGivesOneReadableLine,
                            AfterARefusalTheOldEntryStands);

}  // namespace valdorn
