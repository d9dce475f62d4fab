#include <chrono>

#include <gtest/gtest.h>

#include "platform/ChildLauncher.h"
#include "platform/FileSystem.h"
#include "platform/HttpClient.h"
#include "platform/MenuModel.h"
#include "platform/StatusItem.h"
#include "platform/WindowHost.h"

namespace valdorn {
namespace {

// What stands where nobody says otherwise: neither a limit nor an error, and nothing that the user
// could see or press by mistake.

TEST(PlatformDefaults, AQueryHasNoTimeLimitAndNoRoomForAnAnswer) {
    EXPECT_EQ(HttpQuery{}.timeout, std::chrono::milliseconds{0});
    EXPECT_EQ(HttpQuery{}.maxBodyBytes, 0U);
    EXPECT_EQ(HttpError{}.kind, HttpError::Kind::network);
}

TEST(PlatformDefaults, AChildHasEndedWell) {
    EXPECT_EQ(ChildExit{}, (ChildExit{ChildExit::Kind::exited, 0}));
}

TEST(PlatformDefaults, AnErrorHasNoNumber) {
    EXPECT_EQ(LaunchError{}, (LaunchError{LaunchError::Step::prepare, 0, ""}));
    EXPECT_EQ(FileError{}.errorNumber, 0);
}

TEST(PlatformDefaults, AnEntryIsThereForAllButHasNoKey) {
    const MenuItem item;
    EXPECT_TRUE(item.enabled);
    EXPECT_FALSE(item.hidden);
    EXPECT_FALSE(item.separator);
    EXPECT_EQ(item.shortcut, 0);
}

TEST(PlatformDefaults, AnIconIsGrey) {
    EXPECT_EQ(StatusIcon{}.color, SystemColor::secondary);
}

TEST(PlatformDefaults, AWindowHasNoRoomAndStaysSo) {
    const WindowDescription window;
    EXPECT_EQ(window.kind, WindowKind::status);
    EXPECT_EQ(window.contentWidthPoints, 0);
    EXPECT_EQ(window.contentHeightPoints, 0);
    EXPECT_FALSE(window.resizable);
}

// What tells two values apart: where a part did not count, other tests would compare less than they
// seem to.

TEST(PlatformValues, AnEndIsAnotherByItsKindAndItsNumber) {
    const ChildExit exit{ChildExit::Kind::exited, 9};
    EXPECT_NE(exit, (ChildExit{ChildExit::Kind::signalled, 9}));
    EXPECT_NE(exit, (ChildExit{ChildExit::Kind::exited, 0}));
}

TEST(PlatformValues, ALaunchErrorIsAnotherByItsStepItsNumberAndItsSubject) {
    const LaunchError error{LaunchError::Step::execute, 2, "/a"};
    EXPECT_NE(error, (LaunchError{LaunchError::Step::prepare, 2, "/a"}));
    EXPECT_NE(error, (LaunchError{LaunchError::Step::execute, 1, "/a"}));
    EXPECT_NE(error, (LaunchError{LaunchError::Step::execute, 2, "/b"}));
}

TEST(PlatformValues, AnIconIsAnotherByItsSymbolItsColourAndItsDescription) {
    const StatusIcon icon{"bird", SystemColor::red, "Valdorn"};
    EXPECT_NE(icon, (StatusIcon{"bird.fill", SystemColor::red, "Valdorn"}));
    EXPECT_NE(icon, (StatusIcon{"bird", SystemColor::green, "Valdorn"}));
    EXPECT_NE(icon, (StatusIcon{"bird", SystemColor::red, "bird"}));
}

}  // namespace
}  // namespace valdorn
