#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/posix/StarterMarks.h"
#include "support/ScopedVariable.h"

namespace valdorn {
namespace {

constexpr char busType[] = "DBUS_STARTER_BUS_TYPE";
constexpr char busAddress[] = "DBUS_STARTER_ADDRESS";

TEST(StarterMarksTest, StartBySessionBusIsTakenOutOfTheEnvironment) {
    const ScopedVariable type(busType, "session");
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_TRUE(StarterMarks::takeSessionBus());
    EXPECT_EQ(std::getenv(busType), nullptr);
    EXPECT_EQ(std::getenv(busAddress), nullptr);
    EXPECT_FALSE(StarterMarks::takeSessionBus());
}

TEST(StarterMarksTest, SystemBusDoesNotCountAndIsTakenAway) {
    const ScopedVariable type(busType, "system");
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_FALSE(StarterMarks::takeSessionBus());
    EXPECT_EQ(std::getenv(busType), nullptr);
    EXPECT_EQ(std::getenv(busAddress), nullptr);
}

TEST(StarterMarksTest, AddressAloneDoesNotCount) {
    const ScopedVariable type(busType, std::nullopt);
    const ScopedVariable address(busAddress, "unix:path=/x");
    EXPECT_FALSE(StarterMarks::takeSessionBus());
    EXPECT_EQ(std::getenv(busAddress), nullptr);
}

TEST(StarterMarksTest, ActivationTokenIsWaylandsOrElseX11s) {
    const ScopedVariable wayland("XDG_ACTIVATION_TOKEN", "new");
    const ScopedVariable x11("DESKTOP_STARTUP_ID", "old");
    EXPECT_EQ(StarterMarks::activationToken(), "new");
    const ScopedVariable none("XDG_ACTIVATION_TOKEN", std::nullopt);
    EXPECT_EQ(StarterMarks::activationToken(), "old");
    const ScopedVariable empty("XDG_ACTIVATION_TOKEN", "");
    EXPECT_EQ(StarterMarks::activationToken(), "old");
    const ScopedVariable noneEither("DESKTOP_STARTUP_ID", std::nullopt);
    EXPECT_EQ(StarterMarks::activationToken(), "");
}

}  // namespace
}  // namespace valdorn
