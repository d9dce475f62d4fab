#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>

#include "fleet/RunnersStore.h"
#include "platform/posix/DaemonLedger.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/RecordingChildLauncher.h"
#include "posix/PosixStage.h"
#include "support/AwaitedQueue.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"
#include "support/ManualBackgroundQueue.h"
#include "support/MemoryUserDefaults.h"
#include "support/OpenDescriptors.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

// A sanitizer makes each launch slow, and keeps memory for itself.
constexpr bool isSanitized = !std::string_view(VALDORN_SANITIZE).empty();
constexpr std::size_t runnerCount = 10;

// Buffers find their size within the first thousands. The smallest leak of each relaunch would be
// 320 KiB for all of them.
constexpr std::size_t growthBytes = std::size_t{48} * 1024;

// As many as `./dev faults` wants, or what takes two seconds.
std::size_t wantedRounds() {
    const char* form = std::getenv("VALDORN_FAULTS");
    return form && std::string(form) == "full" ? 1000 : isSanitized ? 20 : 100;
}

// The lines of a child of tests/children/crash.cpp.
const std::string complaint = "time=\"2026-11-21T08:00:00Z\" level=error msg=\"cannot go on\"\n";

std::size_t usedMemoryBytes() {
    return mallinfo2().uordblks;
}

// A fleet whose act_runner crashes at once, on the real kernel. Only the clock is not real.
class RelaunchStormTest : public testing::Test {
protected:
    RelaunchStormTest() {
        host.home = home.path();
        std::filesystem::create_directories(home / "actrunner");
        std::filesystem::create_symlink(childPath("crash"), home / "actrunner/act_runner");
        std::filesystem::create_directories(support);
        std::string list;
        for (std::size_t number = 0; number < runnerCount; ++number)
            list += (list.empty() ? "[" : ",") + record(number);
        EXPECT_FALSE(files.replaceContent(support + "/runners.json", list + "]"));
        reapWhatOthersHaveLeft();
        fleet =
            RunnersStore::create({queue, background, launcher, files, defaults, resources, host});
    }

    static void reapWhatOthersHaveLeft() {
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }

    // Registered, in the list's own form.
    std::string record(std::size_t number) const {
        const std::string id = "r" + std::to_string(number);
        std::filesystem::create_directories(support + "/runners/" + id);
        std::ofstream(support + "/runners/" + id + "/.runner");
        return R"({"id":")" + id +
               R"(","name":"","instanceURL":"","labels":"","extraPath":"","legacy":false})";
    }

    // Every runner has crashed and is to be relaunched.
    bool areAllDue() {
        return queue.runUntil([this] { return queue.armed() >= runnerCount; });
    }

    // From one crash of all to the next. Nobody is launched a millisecond early.
    bool passRound() {
        const auto before = fleet->first()->startedAt();
        queue.advance(RunnerManager::relaunchDelay - 1ms);
        if (queue.armed() != runnerCount || fleet->first()->startedAt() != before)
            return false;
        queue.advance(1ms);
        return fleet->first()->startedAt() == queue.now() && areAllDue();
    }

    TemporaryFolder home;
    const std::string support = home / "Library/Application Support/Valdorn";
    AwaitedQueue queue;
    ManualBackgroundQueue background;
    PosixFileSystem files;
    MemoryUserDefaults defaults;
    FixedBundleResources resources;
    FixedHostInfo host;
    DaemonLedger ledger{files, home / "ledger"};
    PosixChildLauncher children{{.coreDumpLimit = {}, .birthNote = ledger.birthNote()}};
    RecordingChildLauncher launcher{children, ledger};
    std::shared_ptr<RunnersStore> fleet;
};

TEST_F(RelaunchStormTest, LeavesNothingBehindButItsLog) {
    const std::size_t roundCount = wantedRounds();
    const std::string list = files.read(support + "/runners.json").value();
    fleet->startAllRegistered();
    ASSERT_TRUE(areAllDue());
    ASSERT_TRUE(passRound()) << "once, so that each thread and buffer is there";
    const std::size_t descriptors = openDescriptors();
    const std::size_t memoryBytes = usedMemoryBytes();
    for (std::size_t round = 1; round < roundCount; ++round)
        ASSERT_TRUE(passRound()) << round;

    EXPECT_EQ(queue.now().time_since_epoch(), roundCount * RunnerManager::relaunchDelay);
    EXPECT_EQ(openDescriptors(), descriptors);
    if (!isSanitized) {
        EXPECT_LT(usedMemoryBytes(), memoryBytes + growthBytes);
    }
    EXPECT_LE(waitpid(-1, nullptr, WNOHANG), 0) << "a zombie";
    EXPECT_FALSE(files.exists(home / "ledger"));
    EXPECT_FALSE(files.exists(home / "ledger.birth"));
    EXPECT_EQ(files.read(support + "/runners.json").value(), list);
    std::string log;
    for (std::size_t launch = 0; launch <= roundCount; ++launch)
        log += complaint;
    for (const auto& runner : fleet->runners())
        EXPECT_TRUE(files.read(runner->dataDir() + "/valdorn.log").value() == log) << runner->id();
}

}  // namespace
}  // namespace valdorn
