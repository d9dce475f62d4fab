#include <cerrno>
#include <memory>

#include <gtest/gtest.h>

#include "contracts/LoginItemRegistryContract.h"
#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/PosixFileSystem.h"
#include "support/FaultyFileSystem.h"
#include "support/FixedHostInfo.h"
#include "support/MemoryFileSystem.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

class DiskFixture {
public:
    DiskFixture() {
        host_.home = folder_.path();
        reopen();
    }
    LoginItemRegistry& registry() { return *registry_; }
    void refuseChanges() { files_.failChanges(ENOSPC); }
    void reopen() {
        registry_ = std::make_unique<AutostartRegistry>(files_, host_, "/usr/bin/valdorn");
    }

private:
    TemporaryFolder folder_;
    PosixFileSystem disk_;
    FaultyFileSystem files_{disk_};
    FixedHostInfo host_;
    std::unique_ptr<AutostartRegistry> registry_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Autostart, LoginItemRegistryContract, DiskFixture);

const std::string entryFile = "/home/ada/.config/autostart/org.valdorn.valdorn.desktop";

constexpr std::string_view freshEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=Valdorn\n"
    "Exec=\"/usr/bin/valdorn\"\n"
    "Icon=org.valdorn.valdorn\n"
    "Terminal=false\n";

class AutostartRegistryTest : public testing::Test {
protected:
    std::string& entry() { return memory.files[entryFile]; }
    bool isEnabled() const { return registry.status() == LoginItemStatus::enabled; }

    bool isEnabledWith(const std::string& text) {
        entry() = text;
        return isEnabled();
    }

    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    FixedHostInfo host;
    AutostartRegistry registry{files, host, "/usr/bin/valdorn"};
};

TEST_F(AutostartRegistryTest, RegisteringWritesAnEntryAndItsFolder) {
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_EQ(entry(), freshEntry);
    EXPECT_EQ(registry.entryPath(), entryFile);
    EXPECT_EQ(memory.atomicReplacements, std::vector{entryFile});
}

TEST_F(AutostartRegistryTest, TheConfigurationFolderIsThatOfTheEnvironment) {
    const auto pathWith = [this](const std::string& variable) {
        host.variables = {"XDG_CONFIG_HOME_OTHER=/x", variable};
        return AutostartRegistry(files, host, "/usr/bin/valdorn").entryPath();
    };
    EXPECT_EQ(pathWith("XDG_CONFIG_HOME=/conf"), "/conf/autostart/org.valdorn.valdorn.desktop");
    EXPECT_EQ(pathWith("XDG_CONFIG_HOME=/conf/"), "/conf/autostart/org.valdorn.valdorn.desktop");
    EXPECT_EQ(pathWith("XDG_CONFIG_HOME=relative"), entryFile);
    EXPECT_EQ(pathWith("XDG_CONFIG_HOME="), entryFile);
    EXPECT_EQ(pathWith("OTHER=/conf"), entryFile);
}

TEST_F(AutostartRegistryTest, OnlyAnEntryThatStartsSomethingAtLoginIsEnabled) {
    EXPECT_FALSE(isEnabled());
    EXPECT_TRUE(isEnabledWith("[Desktop Entry]\nExec=valdorn\n"));
    EXPECT_FALSE(isEnabledWith(""));
    EXPECT_FALSE(isEnabledWith("[Desktop Entry]\nName=Valdorn\n"));
    EXPECT_FALSE(isEnabledWith("[Desktop Entry]\nExec=\n"));
    EXPECT_FALSE(isEnabledWith("[Other]\nExec=valdorn\n"));
    EXPECT_FALSE(isEnabledWith("[Desktop Entry]\nExec=valdorn\nnonsense\n"));
}

TEST_F(AutostartRegistryTest, HiddenTurnsAnEntryOff) {
    const std::string base(freshEntry);
    EXPECT_FALSE(isEnabledWith(base + "Hidden=true\n"));
    EXPECT_FALSE(isEnabledWith(base + "Hidden = 1 \r\n"));
    EXPECT_TRUE(isEnabledWith(base + "Hidden=false\n"));
    EXPECT_TRUE(isEnabledWith(base + "[Other]\nHidden=true\n"));
}

TEST_F(AutostartRegistryTest, TheDesktopsOwnSwitchTurnsAnEntryOff) {
    const std::string base(freshEntry);
    EXPECT_FALSE(isEnabledWith(base + "X-GNOME-Autostart-enabled=false\n"));
    EXPECT_FALSE(isEnabledWith(base + "X-GNOME-Autostart-enabled=0\n"));
    EXPECT_TRUE(isEnabledWith(base + "X-GNOME-Autostart-enabled=true\n"));
}

TEST_F(AutostartRegistryTest, TheChoiceOfDesktopsIsNotLookedAt) {
    EXPECT_TRUE(isEnabledWith(std::string(freshEntry) + "OnlyShowIn=KDE;\nNotShowIn=GNOME;\n"));
}

TEST_F(AutostartRegistryTest, AnUnreadableEntryIsNotEnabled) {
    memory.folders.insert(entryFile);
    EXPECT_FALSE(isEnabled());
    memory.folders.clear();
    entry() = freshEntry;
    memory.failures[entryFile] = EACCES;
    EXPECT_FALSE(isEnabled());
}

TEST_F(AutostartRegistryTest, RegisteringKeepsWhatIsForeign) {
    entry() =
        "# my note\n"
        "[Desktop Entry]\n"
        "X-KDE-autostart-after=panel\n"
        "Exec=/old/valdorn\n"
        "Name=My Valdorn\n"
        "Name[de]=Meins\n"
        "\n"
        "[Desktop Action quit]\n"
        "Exec=/foreign\n";
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_EQ(entry(),
              "# my note\n"
              "[Desktop Entry]\n"
              "X-KDE-autostart-after=panel\n"
              "Exec=\"/usr/bin/valdorn\"\n"
              "Name=Valdorn\n"
              "Name[de]=Meins\n"
              "Type=Application\n"
              "Icon=org.valdorn.valdorn\n"
              "Terminal=false\n"
              "\n"
              "[Desktop Action quit]\n"
              "Exec=/foreign\n");
}

TEST_F(AutostartRegistryTest, RegisteringTurnsOnWhateverTurnedTheEntryOff) {
    entry() = std::string(freshEntry) +
              "Hidden=true\nX-GNOME-Autostart-enabled=false\nTryExec=/gone/valdorn\n";
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_EQ(entry(), std::string(freshEntry) +
                           "Hidden=false\nX-GNOME-Autostart-enabled=true\n"
                           "TryExec=/usr/bin/valdorn\n");
    EXPECT_TRUE(isEnabled());
}

TEST_F(AutostartRegistryTest, RegisteringOverAFileThatNoDesktopReadsMakesItReadable) {
    entry() = "garbage\n[Desktop Entry]\nX-Mine=1\n???\n";
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_TRUE(isEnabled());
    EXPECT_TRUE(entry().starts_with("[Desktop Entry]\nX-Mine=1\nType=Application\n"));
}

TEST_F(AutostartRegistryTest, UnregisteringDeletesAnEntryThatIsAllOurs) {
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    entry() += "X-GNOME-Autostart-enabled=true\nHidden=false\n";
    EXPECT_EQ(registry.unregisterItem(), std::nullopt);
    EXPECT_FALSE(memory.exists(entryFile));
    EXPECT_TRUE(memory.exists("/home/ada/.config/autostart"));
}

TEST_F(AutostartRegistryTest, UnregisteringTurnsOffAnEntryThatHoldsMore) {
    for (const std::string foreign : {"X-Mine=1\n", "# mine\n", "\n[Other]\n"}) {
        entry() = std::string(freshEntry) + foreign;
        EXPECT_EQ(registry.unregisterItem(), std::nullopt);
        EXPECT_NE(entry().find(foreign), std::string::npos);
        EXPECT_NE(entry().find("\nHidden=true\n"), std::string::npos);
        EXPECT_EQ(entry().find("X-GNOME"), std::string::npos);
        EXPECT_FALSE(isEnabled());
        EXPECT_EQ(registry.registerItem(), std::nullopt);
        EXPECT_TRUE(isEnabled());
    }
}

TEST_F(AutostartRegistryTest, UnregisteringTurnsTheDesktopsOwnSwitchOffWhereItStands) {
    entry() = std::string(freshEntry) + "X-Mine=1\nX-GNOME-Autostart-enabled=true\n";
    EXPECT_EQ(registry.unregisterItem(), std::nullopt);
    EXPECT_EQ(entry(),
              std::string(freshEntry) + "X-Mine=1\nX-GNOME-Autostart-enabled=false\nHidden=true\n");
}

TEST_F(AutostartRegistryTest, AFolderInPlaceOfTheEntryIsAReasonAndStays) {
    memory.folders.insert(entryFile);
    EXPECT_EQ(registry.registerItem(), entryFile + ": Is a directory");
    EXPECT_EQ(registry.unregisterItem(), entryFile + ": Is a directory");
    EXPECT_TRUE(memory.folders.contains(entryFile));
}

TEST_F(AutostartRegistryTest, AFileInPlaceOfTheFolderIsAReason) {
    memory.files["/home/ada/.config/autostart"] = "in the way";
    const auto reason = registry.registerItem();
    ASSERT_TRUE(reason);
    EXPECT_NE(reason->find("Not a directory"), std::string::npos) << *reason;
    EXPECT_EQ(memory.files["/home/ada/.config/autostart"], "in the way");
}

TEST_F(AutostartRegistryTest, WithoutAPathOfItsOwnTheProgramCannotBeRegistered) {
    AutostartRegistry unknown(files, host, "");
    EXPECT_EQ(unknown.registerItem(), "The program's own path is not known");
    EXPECT_FALSE(memory.exists(entryFile));
    entry() = "[Desktop Entry]\nExec=/gone/valdorn\n";
    EXPECT_FALSE(unknown.refreshMovedExecutable());
}

// Whichever operation fails: a reason is given and the old entry stands.
TEST_F(AutostartRegistryTest, WhereverAChangeFailsTheOldEntryStands) {
    using Change = std::optional<std::string> (AutostartRegistry::*)();
    const std::string ours(freshEntry);
    for (const Change change :
         {&AutostartRegistry::registerItem, &AutostartRegistry::unregisterItem}) {
        for (const std::string& old : {ours, ours + "X-Mine=1\n"}) {
            int number = 0;
            do {
                entry() = old;
                files.failOperation(++number, ENOSPC);
                const auto reason = (registry.*change)();
                EXPECT_EQ(reason.has_value(), files.faults() == 1);
                if (reason) {
                    EXPECT_NE(reason->find(": No space left on device"), std::string::npos);
                    EXPECT_EQ(entry(), old);
                }
            } while (files.faults() == 1);
            EXPECT_GE(number, 3);
        }
    }
}

TEST_F(AutostartRegistryTest, AMovedProgramIsFollowed) {
    entry() =
        "# mine\n[Desktop Entry]\nExec=\"/old place/valdorn\" --flag\nName=My name\n"
        "TryExec=/old place/valdorn\n";
    EXPECT_TRUE(registry.refreshMovedExecutable());
    EXPECT_EQ(entry(),
              "# mine\n[Desktop Entry]\nExec=\"/usr/bin/valdorn\"\nName=My name\n"
              "TryExec=/usr/bin/valdorn\n");
    EXPECT_FALSE(registry.refreshMovedExecutable());
}

// An upgrade may leave the old program where it was.
TEST_F(AutostartRegistryTest, ACopyOfOursElsewhereGivesWay) {
    memory.files["/opt/valdorn-1.0/valdorn"] = "the version before";
    memory.files["/opt/my $1 programs/valdorn"] = "the version before";
    for (const std::string exec : {"/opt/valdorn-1.0/valdorn", "\"/opt/valdorn-1.0/valdorn\"",
                                   "\"/opt/my \\\\$1 programs/valdorn\""}) {
        entry() = "# mine\n[Desktop Entry]\nX-Mine=1\nExec=" + exec +
                  "\nTryExec=/opt/valdorn-1.0/valdorn\nX-GNOME-Autostart-enabled=true\n";
        EXPECT_TRUE(registry.refreshMovedExecutable()) << exec;
        EXPECT_EQ(entry(),
                  "# mine\n[Desktop Entry]\nX-Mine=1\nExec=\"/usr/bin/valdorn\"\n"
                  "TryExec=/usr/bin/valdorn\nX-GNOME-Autostart-enabled=true\n");
        EXPECT_FALSE(registry.refreshMovedExecutable()) << exec;
    }
}

TEST_F(AutostartRegistryTest, WhatTheUserHasChosenToStartIsNotTouched) {
    for (const char* const program : {"/opt/other/valdorn", "/opt/valdorn/wrapper", "/usr/bin/env",
                                      "/opt/valdorn-next", "/opt/my-valdorn"})
        memory.files[program] = "is there";
    memory.files["/home/ada/bin/valdorn"] = "#!/bin/sh\nexec /usr/bin/valdorn\n";
    memory.folders.insert("/srv/valdorn");
    for (const std::string exec :
         {"/home/ada/bin/valdorn", "/srv/valdorn", "/opt/other/valdorn --quiet",
          "\"/opt/other/valdorn\" %U", "/opt/valdorn/wrapper", "/usr/bin/env valdorn",
          "/usr/bin/env A=b /opt/other/valdorn", "/opt/valdorn-next", "/opt/my-valdorn", "valdorn",
          "bin/valdorn", "/usr/bin/valdorn", "\"/usr/bin/valdorn\"", "/usr/bin/valdorn --quiet"}) {
        const std::string text = "[Desktop Entry]\nExec=" + exec + "\n";
        entry() = text;
        EXPECT_FALSE(registry.refreshMovedExecutable()) << exec;
        EXPECT_EQ(entry(), text);
    }
    EXPECT_TRUE(memory.atomicReplacements.empty());
}

TEST_F(AutostartRegistryTest, AnEntryThatIsOffOrMissingIsNotFollowed) {
    EXPECT_FALSE(registry.refreshMovedExecutable());
    EXPECT_FALSE(memory.exists(entryFile));
    memory.files["/opt/other/valdorn"] = "another copy";
    for (const std::string exec : {"/gone/valdorn", "/opt/other/valdorn"}) {
        for (const std::string off : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
            entry() = "[Desktop Entry]\nExec=" + exec + "\n" + off + "\n";
            EXPECT_FALSE(registry.refreshMovedExecutable());
        }
    }
    EXPECT_TRUE(memory.atomicReplacements.empty());
}

TEST_F(AutostartRegistryTest, AMoveThatCannotBeWrittenLeavesTheEntry) {
    const std::string old = "[Desktop Entry]\nExec=/gone/valdorn\n";
    entry() = old;
    files.failChanges(EROFS);
    EXPECT_FALSE(registry.refreshMovedExecutable());
    EXPECT_EQ(entry(), old);
    EXPECT_EQ(files.faults(), 1);
}

}  // namespace
}  // namespace valdorn
