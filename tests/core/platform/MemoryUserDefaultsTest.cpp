#include <memory>

#include <gtest/gtest.h>

#include "contracts/UserDefaultsContract.h"
#include "support/MemoryUserDefaults.h"

namespace valdorn {
namespace {

class MemoryFixture {
public:
    UserDefaults& defaults() { return *defaults_; }

    void reopen() {
        auto reopened = std::make_unique<MemoryUserDefaults>();
        reopened->strings = defaults_->strings;
        reopened->booleans = defaults_->booleans;
        defaults_ = std::move(reopened);
    }

private:
    std::unique_ptr<MemoryUserDefaults> defaults_ = std::make_unique<MemoryUserDefaults>();
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, UserDefaultsContract, MemoryFixture);

TEST(MemoryUserDefaultsTest, StoringAnEqualValueWritesNothing) {
    MemoryUserDefaults defaults;
    defaults.setString("text", "a");
    defaults.setBoolean("truth", false);
    EXPECT_EQ(defaults.writes, 2);
    defaults.setString("text", "a");
    defaults.setBoolean("truth", false);
    defaults.registerFallbacks({{"text", "b"}});
    EXPECT_EQ(defaults.writes, 2);
}

TEST(MemoryUserDefaultsTest, AValueHoldsThatTheDiskRefuses) {
    MemoryUserDefaults defaults;
    defaults.diskRefuses = true;
    defaults.setString("text", "a");
    defaults.setBoolean("truth", true);
    EXPECT_EQ(defaults.string("text"), "a");
    EXPECT_TRUE(defaults.boolean("truth"));
    EXPECT_EQ(defaults.writes, 0);
}

}  // namespace
}  // namespace valdorn
