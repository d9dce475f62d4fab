#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/CommandLine.h"
#include "app/LoginItem.h"
#include "support/MemoryLoginItemRegistry.h"
#include "support/RecordingSystemLog.h"

namespace valdorn {
namespace {

class CommandLineTest : public testing::Test {
protected:
    std::optional<std::string> answer(std::vector<std::string> arguments) {
        return CommandLine::answer(arguments, registry, log);
    }

    MemoryLoginItemRegistry registry;
    RecordingSystemLog log;
};

TEST_F(CommandLineTest, TellsTheStatus) {
    EXPECT_EQ(answer({"valdorn", "--login-status"}), "not-enabled");
    registry.current = LoginItemStatus::enabled;
    EXPECT_EQ(answer({"valdorn", "--login-status"}), "enabled");
    EXPECT_EQ(registry.registrations + registry.unregistrations, 0);
}

TEST_F(CommandLineTest, Enables) {
    EXPECT_EQ(answer({"valdorn", "--enable-login"}), "enabled");
    EXPECT_EQ(registry.registrations, 1);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(CommandLineTest, TellsARefusedEnabling) {
    registry.failWith = "the disk is full";
    EXPECT_EQ(answer({"valdorn", "--enable-login"}), "failed");
    EXPECT_EQ(log.lines,
              (std::vector<std::string>{"Valdorn: login-item toggle failed: the disk is full"}));
}

TEST_F(CommandLineTest, EnabledBeforeARefusalStaysEnabled) {
    registry.current = LoginItemStatus::enabled;
    registry.failWith = "x";
    EXPECT_EQ(answer({"valdorn", "--enable-login"}), "enabled");
}

TEST_F(CommandLineTest, Disables) {
    registry.current = LoginItemStatus::enabled;
    EXPECT_EQ(answer({"valdorn", "--disable-login"}), "disabled");
    EXPECT_EQ(registry.unregistrations, 1);
}

TEST_F(CommandLineTest, DisablingWhatIsNotEnabledChangesNothing) {
    registry.failWith = "x";
    EXPECT_EQ(answer({"valdorn", "--disable-login"}), "disabled");
    EXPECT_EQ(registry.unregistrations, 0);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(CommandLineTest, TellsARefusedDisabling) {
    registry.current = LoginItemStatus::enabled;
    registry.failWith = "x";
    EXPECT_EQ(answer({"valdorn", "--disable-login"}), "still-enabled");
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(CommandLineTest, StatusGoesBeforeEnableGoesBeforeDisable) {
    EXPECT_EQ(answer({"valdorn", "--enable-login", "--login-status"}), "not-enabled");
    EXPECT_EQ(answer({"valdorn", "--disable-login", "--login-status"}), "not-enabled");
    EXPECT_EQ(registry.registrations, 0);
    EXPECT_EQ(answer({"valdorn", "--disable-login", "x", "--enable-login"}), "enabled");
    EXPECT_EQ(registry.unregistrations, 0);
}

TEST_F(CommandLineTest, PlaceDoesNotMatter) {
    EXPECT_EQ(answer({"--login-status"}), "not-enabled");
    EXPECT_EQ(answer({"valdorn", "x", "--", "--login-status", "y"}), "not-enabled");
}

TEST_F(CommandLineTest, EverythingElseStartsTheProgram) {
    for (const char* argument : {"", "login-status", "--LOGIN-STATUS", "--login-status=1",
                                 "-login-status", " --login-status", "--help"}) {
        EXPECT_EQ(answer({"valdorn", argument}), std::nullopt) << argument;
    }
    EXPECT_EQ(answer({}), std::nullopt);
}

TEST_F(CommandLineTest, SettingTwiceRegistersTwice) {
    LoginItem::set(true, registry, log);
    LoginItem::set(true, registry, log);
    EXPECT_EQ(registry.registrations, 2);
}

}  // namespace
}  // namespace valdorn
