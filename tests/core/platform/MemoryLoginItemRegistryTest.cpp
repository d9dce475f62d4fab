#include <gtest/gtest.h>

#include "contracts/LoginItemRegistryContract.h"
#include "support/MemoryLoginItemRegistry.h"

namespace valdorn {
namespace {

class MemoryFixture {
public:
    LoginItemRegistry& registry() { return registry_; }
    void refuseChanges() { registry_.failWith = "no room"; }
    void reopen() {}  // the object is the registry here

private:
    MemoryLoginItemRegistry registry_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, LoginItemRegistryContract, MemoryFixture);

TEST(MemoryLoginItemRegistryTest, CountsAttemptsAndGivesTheReasonSet) {
    MemoryLoginItemRegistry registry;
    registry.failWith = "no room";
    EXPECT_EQ(registry.registerItem(), "no room");
    registry.failWith.reset();
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_EQ(registry.unregisterItem(), std::nullopt);
    EXPECT_EQ(registry.registrations, 2);
    EXPECT_EQ(registry.unregistrations, 1);
}

}  // namespace
}  // namespace valdorn
