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

constexpr char waylandToken[] = "XDG_ACTIVATION_TOKEN";
constexpr char x11Id[] = "DESKTOP_STARTUP_ID";

TEST(StarterMarksTest, ActivationTokenIsWaylandsOrElseX11s) {
    const ScopedVariable wayland(waylandToken, "new");
    const ScopedVariable x11(x11Id, "old");
    EXPECT_EQ(StarterMarks::takeActivationToken(), "new");
    const ScopedVariable empty(waylandToken, "");
    const ScopedVariable x11Again(x11Id, "old");
    EXPECT_EQ(StarterMarks::takeActivationToken(), "old");
}

TEST(StarterMarksTest, ActivationTokenIsTakenOutOfTheEnvironment) {
    const ScopedVariable wayland(waylandToken, "new");
    const ScopedVariable x11(x11Id, "old");
    StarterMarks::takeActivationToken();
    EXPECT_EQ(std::getenv(waylandToken), nullptr);
    EXPECT_EQ(std::getenv(x11Id), nullptr);
    EXPECT_EQ(StarterMarks::takeActivationToken(), "");
}

}  // namespace
}  // namespace valdorn
