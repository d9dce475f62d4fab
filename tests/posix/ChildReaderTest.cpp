#include <chrono>
#include <cstddef>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>

#include "children/ChildTools.h"
#include "platform/posix/ChildReader.h"
#include "platform/posix/LargePipes.h"
#include "platform/posix/SpawnedChild.h"
#include "posix/PosixStage.h"
#include "support/ChildRecorder.h"

namespace valdorn {

namespace {

// The least and the most that one byte, one page and one pipe make a difference to.
constexpr std::size_t sizes[] = {1, 4096, 65'535, 65'536, 65'537, 200'000};

class ChildReaderTest : public testing::Test {
protected:
    static SpawnedChild spawn(const std::string& name, std::vector<std::string> arguments) {
        auto child = spawnChild(childCommand(name, std::move(arguments)));
        EXPECT_TRUE(child.ok());
        return std::move(child.value());
    }

    ChildReader reader;
};

TEST_F(ChildReaderTest, FloodEndsWithWhatHasNoLineFeedInAChunkOfItsOwn) {
    std::string lines;
    while (lines.size() < 40'000)
        lines += "one of many lines\n";
    SpawnedChild child = spawn("play", {"print:" + lines + "last words", "exit:0"});
    ASSERT_TRUE(waitForEndOf(child.process->pid()));
    ChildRecorder recorder;
    ASSERT_EQ(reader.watch(std::move(child), recorder.handlers()), std::nullopt);
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.chunks(), (std::vector<std::string>{lines, "last words"}));
}

// More than half a buffer and less than a pipe holds: with so much to read at once a child floods.
constexpr int burstBytes = 40'000;

// The pipe of a child as the test sees it, also while somebody else reads it.
class PipeView {
public:
    explicit PipeView(const Descriptor& readEnd)
        : readEnd_(fcntl(readEnd.number(), F_DUPFD_CLOEXEC, 0)) {}

    bool isLarge() const {
        return fcntl(readEnd_.number(), F_GETPIPE_SZ) == LargePipes::largeBytes;
    }

    // Waits until that much is to be read.
    void awaitReadable(int bytes) const {
        pollfd readable{readEnd_.number(), POLLIN, 0};
        int count = 0;
        do {
            ASSERT_EQ(poll(&readable, 1, 60'000), 1);
            ASSERT_EQ(ioctl(readEnd_.number(), FIONREAD, &count), 0);
        } while (count < bytes);
    }

private:
    Descriptor readEnd_;
};

TEST_F(ChildReaderTest, HearsOfWhatHappenedBeforeItWasAsked) {
    for (int round = 0; round < 200; ++round) {
        ChildRecorder recorder;
        SpawnedChild child = spawn("play", {"print:last words", "exit:3"});
        ASSERT_TRUE(waitForEndOf(child.process->pid()));
        ASSERT_EQ(reader.watch(std::move(child), recorder.handlers()), std::nullopt);
        ASSERT_TRUE(recorder.waitForRelease()) << "round " << round;
        ASSERT_EQ(recorder.output(), "last words");
        ASSERT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 3}));
    }
}

TEST_F(ChildReaderTest, LosesNothingOfAChildThatPrintsAndExitsAtOnce) {
    for (const std::size_t size : sizes) {
        for (int round = 0; round < 10; ++round) {
            ChildRecorder recorder;
            const std::string fill = "fill:" + std::to_string(size);
            ASSERT_EQ(reader.watch(spawn("play", {fill, "exit:0"}), recorder.handlers()),
                      std::nullopt);
            ASSERT_TRUE(recorder.waitForRelease());
            ASSERT_EQ(recorder.output(), children::pattern(size)) << size << " bytes";
        }
    }
}

// A child that prints a burst at once, waits, and prints another.
struct BurstingChild {
    BurstingChild(ChildReader& reader, SpawnedChild child)
        : id(child.process->pid()), pipe(child.output) {
        pipe.awaitReadable(burstBytes);
        EXPECT_EQ(reader.watch(std::move(child), recorder.handlers()), std::nullopt);
        EXPECT_TRUE(recorder.waitForBytes(burstBytes));
    }

    pid_t id;
    PipeView pipe;
    ChildRecorder recorder;
};

TEST_F(ChildReaderTest, LargePipeGoesFromAChildThatIsQuietToOneThatFloods) {
    const std::string burst = "fill:" + std::to_string(burstBytes);
    std::vector<std::unique_ptr<BurstingChild>> quiet;
    for (std::size_t count = 0; count < LargePipes::atMost; ++count) {
        quiet.push_back(
            std::make_unique<BurstingChild>(reader, spawn("play", {burst, "await", burst})));
        EXPECT_TRUE(quiet.back()->pipe.isLarge());
    }

    SpawnedChild fifth = spawn("flood", {});
    const pid_t fifthId = fifth.process->pid();
    const PipeView fifthPipe(fifth.output);
    std::promise<void> large;
    std::promise<void> ended;
    const auto look = [&, isTold = false](std::string_view, OutputCredit) mutable {
        if (!isTold && fifthPipe.isLarge()) {
            isTold = true;
            large.set_value();
        }
    };
    ASSERT_EQ(reader.watch(std::move(fifth), {look, [&](ChildExit) { ended.set_value(); }}),
              std::nullopt);
    EXPECT_EQ(large.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_FALSE(quiet.front()->pipe.isLarge());

    // It prints on as before.
    for (const auto& child : quiet)
        kill(child->id, SIGUSR1);
    for (const auto& child : quiet) {
        ASSERT_TRUE(child->recorder.waitForRelease());
        EXPECT_EQ(child->recorder.output(),
                  children::pattern(burstBytes) + children::pattern(burstBytes));
    }
    kill(fifthId, SIGTERM);
    EXPECT_EQ(ended.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

}  // namespace

}  // namespace valdorn
