#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "runner/RunnerManager.h"
#include "support/AwaitedQueue.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"
#include "support/ManualBackgroundQueue.h"
#include "support/MemoryUserDefaults.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

// A runner whose act_runner is a script, with the kernel's pipes and files between them.
class RunnerOverPipeTest : public testing::Test {
protected:
    RunnerOverPipeTest() { host.home = home.path(); }

    void install(const std::string& script) {
        std::filesystem::create_directories(home / "actrunner");
        const std::string path = home / "actrunner/act_runner";
        std::ofstream(path) << "#!/bin/sh\n" << script;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        std::filesystem::create_directories(runner->dataDir());
        std::ofstream(runner->dataDir() + "/.runner");
    }

    std::string log() const { return files.read(runner->dataDir() + "/valdorn.log").value(); }

    TemporaryFolder home;
    AwaitedQueue queue;
    ManualBackgroundQueue background;
    PosixFileSystem files;
    MemoryUserDefaults defaults;
    FixedBundleResources resources;
    FixedHostInfo host;
    PosixChildLauncher launcher;
    std::shared_ptr<RunnerManager> runner =
        RunnerManager::create({"abc", "", "", "", "", false},
                              {queue, background, launcher, files, defaults, resources, host});
};

TEST_F(RunnerOverPipeTest, EveryLineOfAFloodIsKeptAndReadBeforeTheExitIs) {
    constexpr int lines = 4000;
    install(
        "number=0\n"
        "while [ $number -lt " +
        std::to_string(lines) +
        " ]; do\n"
        "  number=$((number + 1))\n"
        "  echo \"Error: $number\"\n"
        "  echo \"[CI/job-$number] some output of the job, with version: $number\"\n"
        "done\n"
        "printf 'Running job with maxParallel=1\\nnot ended'\n");
    int changes = 0;
    const Subscription subscription = runner->onWillChange([&changes] { ++changes; });
    runner->start();
    ASSERT_TRUE(queue.runUntil([this] { return queue.armed() > 0; })) << "no relaunch is due";

    std::string kept;
    for (int number = 1; number <= lines; ++number)
        kept += "Error: " + std::to_string(number) + "\n";
    EXPECT_EQ(log(), kept);
    EXPECT_EQ(runner->runnerVersion(), std::to_string(lines));
    EXPECT_EQ(runner->currentJob(), "CI/job-" + std::to_string(lines));
    EXPECT_EQ(runner->status(), RunnerStatus::building);
    // Starting, the start time, and building.
    EXPECT_EQ(changes, 2 * lines + 3);
}

}  // namespace
}  // namespace valdorn
