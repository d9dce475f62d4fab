#include <cstddef>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "children/ChildTools.h"
#include "platform/posix/ChildReader.h"
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

}  // namespace

}  // namespace valdorn
