#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/PosixFileSystem.h"
#include "runner/Config.h"
#include "runner/RunnerManager.h"
#include "support/FakeWorld.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

namespace fs = std::filesystem;

// All but the files: they are real, in a home of the test's own.
struct WorldWithHome : FakeWorld {
    explicit WorldWithHome(const std::string& home) { host.home = home; }
};

// A job that runs with the user's rights may leave links where the program writes. Each test plants
// one that leads to a file of the user's, `precious`, and looks at what is in that afterwards.
class PlantedLinkTest : public testing::Test {
protected:
    PlantedLinkTest() { write(precious, "kept\n"); }

    static void write(const std::string& path, const std::string& text) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path) << text;
    }

    static void plant(const std::string& link, const std::string& target) {
        fs::create_directories(fs::path(link).parent_path());
        fs::create_symlink(target, link);
    }

    std::string content(const std::string& path) const {
        const auto read = files.read(path);
        return read.ok() ? read.value() : "(" + read.error().description() + ")";
    }

    static bool isFileOfItsOwn(const std::string& path) {
        return fs::is_regular_file(fs::symlink_status(path));
    }

    // Launches the runner's daemon, which is none: only what is written before matters.
    void startRunner() {
        write(runner->dataDir() + "/.runner", "");
        runner->start();
        world.queue.runPosted();
        ASSERT_EQ(world.launcher.launches.size(), 1U);
    }

    std::string inDataFolder(const std::string& name) { return runner->dataDir() + "/" + name; }

    TemporaryFolder home;
    const std::string precious = home / "precious";
    PosixFileSystem files;
    WorldWithHome world{home.path()};
    std::shared_ptr<RunnerManager> runner = RunnerManager::create(
        FakeWorld::record("abc"), {world.queue, world.background, world.launcher, files,
                                   world.defaults, world.resources, world.host});
    AutostartRegistry registry{files, world.host, "/usr/bin/valdorn"};
};

TEST_F(PlantedLinkTest, TheDaemonsConfigurationTakesTheLinksPlace) {
    const std::string configuration = inDataFolder(Config::daemonConfigurationName);
    plant(configuration, precious);
    startRunner();
    EXPECT_EQ(content(precious), "kept\n");
    EXPECT_EQ(content(configuration), Config::daemonConfiguration);
    EXPECT_TRUE(isFileOfItsOwn(configuration));
}

TEST_F(PlantedLinkTest, ADanglingLinkMakesNoFileWhereItLeads) {
    const std::string configuration = inDataFolder(Config::daemonConfigurationName);
    plant(configuration, home / "elsewhere");
    plant(registry.entryPath(), home / "elsewhere");
    startRunner();
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_FALSE(fs::exists(home / "elsewhere"));
    EXPECT_TRUE(isFileOfItsOwn(configuration));
    EXPECT_TRUE(isFileOfItsOwn(registry.entryPath()));
}

// A file of others in the place of the old one can be replaced, and is; it cannot be written to.
TEST_F(PlantedLinkTest, AFileThatWeMayNotWriteToStaysAsItIs) {
    const std::string configuration = inDataFolder(Config::daemonConfigurationName);
    ASSERT_EQ(chmod(precious.c_str(), 0400), 0);
    fs::create_directories(runner->dataDir());
    fs::create_hard_link(precious, configuration);
    startRunner();
    EXPECT_EQ(content(precious), "kept\n");
    EXPECT_EQ(content(configuration), Config::daemonConfiguration);
}

// Names of temporary files can be guessed.
TEST_F(PlantedLinkTest, ATemporaryFilesNameLeadsNowhereEither) {
    const std::string configuration = inDataFolder(Config::daemonConfigurationName);
    std::vector<std::string> guesses;
    for (int number = 0; number < 3; ++number)
        guesses.push_back(
            inDataFolder(".valdorn-" + std::to_string(getpid()) + "-" + std::to_string(number)));
    plant(guesses[0], precious);
    plant(guesses[1], home / "elsewhere");
    plant(guesses[2], "/dev/full");
    startRunner();
    EXPECT_EQ(content(configuration), Config::daemonConfiguration);
    EXPECT_EQ(content(precious), "kept\n");
    EXPECT_FALSE(fs::exists(home / "elsewhere"));
    for (const std::string& guess : guesses)
        EXPECT_TRUE(fs::is_symlink(guess)) << guess;
}

TEST_F(PlantedLinkTest, TheAutostartEntryTakesTheLinksPlace) {
    plant(registry.entryPath(), precious);
    EXPECT_EQ(registry.registerItem(), std::nullopt);
    EXPECT_EQ(content(precious), "kept\n");
    EXPECT_TRUE(isFileOfItsOwn(registry.entryPath()));
    EXPECT_EQ(registry.status(), LoginItemStatus::enabled);
    // No line of what the link led to, either: none of them is one of a desktop entry.
    EXPECT_EQ(content(registry.entryPath()).find("kept"), std::string::npos);
}

TEST_F(PlantedLinkTest, AnEntryThatIsOurselvesElsewhereStaysWhenTheLinkGoes) {
    ASSERT_EQ(registry.registerItem(), std::nullopt);
    const std::string entry = content(registry.entryPath());
    fs::remove(registry.entryPath());
    write(precious, entry);
    plant(registry.entryPath(), precious);
    EXPECT_EQ(registry.unregisterItem(), std::nullopt);
    EXPECT_FALSE(fs::is_symlink(registry.entryPath()));
    EXPECT_EQ(content(precious), entry);
}

TEST_F(PlantedLinkTest, AnEntryThatFollowsAMoveFollowsNoLink) {
    const std::string entry = "[Desktop Entry]\nExec=/gone/valdorn\nX-Mine=1\n";
    write(precious, entry);
    plant(registry.entryPath(), precious);
    EXPECT_TRUE(registry.refreshMovedExecutable());
    EXPECT_EQ(content(precious), entry);
    EXPECT_TRUE(isFileOfItsOwn(registry.entryPath()));
}

TEST_F(PlantedLinkTest, AnEntryThatIsSwitchedOffFollowsNoLink) {
    const std::string entry = "[Desktop Entry]\nExec=/usr/bin/valdorn\nX-Mine=1\n";
    write(precious, entry);
    plant(registry.entryPath(), precious);
    EXPECT_EQ(registry.unregisterItem(), std::nullopt);
    EXPECT_EQ(content(precious), entry);
    EXPECT_EQ(registry.status(), LoginItemStatus::notEnabled);
    EXPECT_TRUE(isFileOfItsOwn(registry.entryPath()));
}

// Somebody may keep the log on another disk: it alone is written through a link, and only at the end
// of a file that the user may write to.
TEST_F(PlantedLinkTest, TheLogGoesWhereItsLinkLeadsAndOnlyGrowsThere) {
    plant(inDataFolder(Config::runnerLogName), precious);
    startRunner();
    world.launcher.child(0).print("Error: one\n");
    world.queue.runPosted();
    EXPECT_EQ(content(precious), "kept\nError: one\n");
}

}  // namespace
}  // namespace valdorn
