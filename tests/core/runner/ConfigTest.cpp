#include <string>

#include <gtest/gtest.h>

#include "runner/Config.h"
#include "runner/RunnerConfig.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"
#include "support/MemoryUserDefaults.h"

namespace valdorn {
namespace {

const std::string fixedFolders =
    "/home/ada/.cargo/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

std::string pathFor(const char* extra) {
    return Config::pathEnv(extra, "/home/ada");
}

TEST(ConfigPathEnv, IsTheSevenFixedFoldersWithoutExtras) {
    EXPECT_EQ(pathFor(""), fixedFolders);
}

TEST(ConfigPathEnv, PutsExtrasFirstAndDropsEmptyPieces) {
    EXPECT_EQ(pathFor("::/a::/b:"), "/a:/b:" + fixedFolders);
    EXPECT_EQ(pathFor(":::"), fixedFolders);
}

TEST(ConfigPathEnv, TrimsAndDeduplicatesNothing) {
    EXPECT_EQ(pathFor("/usr/bin"), "/usr/bin:" + fixedFolders);
    EXPECT_EQ(pathFor(" : /a "), " : /a :" + fixedFolders);
}

TEST(ConfigPathEnv, JoinsTheHomeFolderAsPlainText) {
    EXPECT_TRUE(Config::pathEnv("", "/home/a/").starts_with("/home/a//.cargo/bin:"));
}

TEST(ConfigActRunnerPath, IsTheBundledOneWhenThereIsOne) {
    FixedBundleResources resources;
    resources.paths["act_runner"] = "/usr/lib/valdorn/act_runner";
    EXPECT_EQ(Config::actRunnerPath(resources, FixedHostInfo{}), "/usr/lib/valdorn/act_runner");
}

TEST(ConfigActRunnerPath, IsTheFixedPlaceUnderHomeOtherwise) {
    EXPECT_EQ(Config::actRunnerPath(FixedBundleResources{}, FixedHostInfo{}),
              "/home/ada/actrunner/act_runner");
}

TEST(ConfigFolders, SupportFolderStandsUnderHome) {
    EXPECT_EQ(Config::applicationSupportFolder("/home/ada"),
              "/home/ada/Library/Application Support/Valdorn");
    EXPECT_EQ(Config::applicationSupportFolder("/"), "/Library/Application Support/Valdorn");
}

std::string defaultNameOf(std::optional<std::string> computerName) {
    FixedHostInfo host;
    host.name = std::move(computerName);
    MemoryUserDefaults defaults;
    Config::registerDefaults(host, defaults);
    return defaults.string("runnerName").value_or("(none)");
}

TEST(ConfigDefaults, RunnerIsNamedAfterTheComputer) {
    EXPECT_EQ(defaultNameOf("Ada Mac Mini"), "ada-mac-mini");
    EXPECT_EQ(defaultNameOf("My Mac"), "my-mac");
    EXPECT_EQ(defaultNameOf(std::nullopt), "mac");
    EXPECT_EQ(defaultNameOf(""), "");
}

TEST(ConfigDefaults, OnlyBlanksAreReplacedInTheName) {
    EXPECT_EQ(defaultNameOf("Ada's\tMac_Mini.local  2"), "ada's\tmac_mini.local--2");
}

TEST(ConfigDefaults, NameIsLoweredBeyondAsciiAndInNoLocale) {
    EXPECT_EQ(defaultNameOf("\xC3\x84PFEL I"), "\xC3\xA4pfel-i");
}

TEST(ConfigDefaults, AsciiIsLoweredAsItIsBesideOtherLetters) {
    std::string ascii;
    for (char letter = 0; letter < 127; ++letter)
        ascii += letter;
    EXPECT_EQ(defaultNameOf(ascii) + "\xC3\xA9", defaultNameOf(ascii + "\xC3\x89"));
}

TEST(ConfigDefaults, RegistersFourFallbacksAndWritesNone) {
    MemoryUserDefaults defaults;
    Config::registerDefaults(FixedHostInfo{}, defaults);
    EXPECT_EQ(defaults.string("instanceURL"), "");
    EXPECT_EQ(defaults.string("runnerName"), "mac");
    EXPECT_EQ(defaults.string("labels"), "macos");
    EXPECT_EQ(defaults.string("extraPath"), "");
    EXPECT_EQ(defaults.fallbacks.size(), 4U);
    EXPECT_FALSE(defaults.boolean("hasConnected"));
    EXPECT_EQ(defaults.writes, 0);
    EXPECT_TRUE(defaults.strings.empty());
}

TEST(ConfigDefaults, FallbacksNeverOverrideTheUsersValues) {
    MemoryUserDefaults defaults;
    defaults.strings["labels"] = "linux";
    defaults.strings["runnerName"] = "";
    Config::registerDefaults(FixedHostInfo{}, defaults);
    EXPECT_EQ(defaults.string("labels"), "linux");
    EXPECT_EQ(defaults.string("runnerName"), "");
}

TEST(RunnerConfig, IsListedUnderItsNameOrAsRunner) {
    RunnerConfig record;
    EXPECT_EQ(displayName(record), "runner");
    record.name = "ci";
    EXPECT_EQ(displayName(record), "ci");
}

TEST(RunnerConfig, IsAnotherOneByEachOfItsFields) {
    const RunnerConfig record{"1", "ci", "https://git.example", "linux", "/opt/bin", true};
    EXPECT_EQ(record, RunnerConfig(record));
    for (std::string RunnerConfig::*const text :
         {&RunnerConfig::id, &RunnerConfig::name, &RunnerConfig::instanceURL, &RunnerConfig::labels,
          &RunnerConfig::extraPath}) {
        RunnerConfig other = record;
        other.*text += " ";
        EXPECT_NE(other, record) << other.*text;
    }
    RunnerConfig other = record;
    other.legacy = false;
    EXPECT_NE(other, record);
}

}  // namespace
}  // namespace valdorn
