#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/posix/StarterMarks.h"
#include "support/ScopedVariable.h"

namespace valdorn {
namespace {

constexpr char busType[] = "DBUS_STARTER_BUS_TYPE";
constexpr char busAddress[] = "DBUS_STARTER_ADDRESS";

TEST(StarterMarks, StartBySessionBusIsTakenOutOfTheEnvironment) {
    const ScopedVariable type(busType, "session");
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_TRUE(takeStarterMarks());
    EXPECT_EQ(std::getenv(busType), nullptr);
    EXPECT_EQ(std::getenv(busAddress), nullptr);
    EXPECT_FALSE(takeStarterMarks());
}

TEST(StarterMarks, SystemBusDoesNotCountAndIsTakenAway) {
    const ScopedVariable type(busType, "system");
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_FALSE(takeStarterMarks());
    EXPECT_EQ(std::getenv(busType), nullptr);
    EXPECT_EQ(std::getenv(busAddress), nullptr);
}

TEST(StarterMarks, AddressAloneDoesNotCount) {
    const ScopedVariable type(busType, std::nullopt);
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_FALSE(takeStarterMarks());
    EXPECT_EQ(std::getenv(busAddress), nullptr);
}

}  // namespace
}  // namespace valdorn
