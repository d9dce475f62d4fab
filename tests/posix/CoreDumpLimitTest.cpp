#include <algorithm>
#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/posix/CoreDumpLimit.h"
#include "platform/posix/PosixChildLauncher.h"
#include "support/ChildRecorder.h"

namespace valdorn {
namespace {

rlimit limitNow() {
    rlimit limit{};
    EXPECT_EQ(getrlimit(RLIMIT_CORE, &limit), 0);
    return limit;
}

// This process begins as one whose core would be dumped, and ends as it was.
class CoreDumpLimitTest : public testing::Test {
protected:
    CoreDumpLimitTest() {
        const rlimit dumping{wanted, before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_CORE, &dumping), 0);
    }
    void SetUp() override {
        if (before.rlim_max == 0)
            GTEST_SKIP() << "no core may be dumped here, whoever asks";
    }
    ~CoreDumpLimitTest() override { setrlimit(RLIMIT_CORE, &before); }

    static ChildCommand showLimits() { return {"/bin/cat", {"/proc/self/limits"}, "/", {}}; }

    // The soft limit in what a child has shown.
    static std::string softLimitIn(const std::string& limits) {
        constexpr char title[] = "Max core file size";
        const std::size_t line = limits.find(title);
        if (line == std::string::npos)
            return "none in: " + limits;
        std::istringstream words(limits.substr(line + sizeof title));
        std::string soft;
        words >> soft;
        return soft;
    }

    static std::string softLimitOfAChild(PosixChildLauncher& launcher) {
        ChildRecorder recorder;
        const auto child = launcher.launch(showLimits(), recorder.handlers());
        EXPECT_TRUE(child.ok() && recorder.waitForRelease());
        return softLimitIn(recorder.output());
    }

    static std::string softLimitOfATool(PosixChildLauncher& launcher) {
        std::string output;
        EXPECT_TRUE(
            launcher.run(showLimits(), [&](std::string_view part) { output += part; }).ok());
        return softLimitIn(output);
    }

    const rlimit before = limitNow();
    const rlim_t wanted = std::min(rlim_t{4096}, before.rlim_max);
};

TEST_F(CoreDumpLimitTest, OurMemoryIsNotDumpedUnlessSomebodyRaisesTheLimitAgain) {
    const CoreDumpLimit limit;
    EXPECT_EQ(limitNow().rlim_cur, 0U);
    EXPECT_EQ(limitNow().rlim_max, before.rlim_max);
}

TEST_F(CoreDumpLimitTest, WhatWeWereStartedWithIsKnown) {
    const CoreDumpLimit limit;
    ASSERT_TRUE(limit.before());
    EXPECT_EQ(limit.before()->rlim_cur, wanted);
    EXPECT_EQ(limit.before()->rlim_max, before.rlim_max);
}

TEST_F(CoreDumpLimitTest, ChildrenHaveWhatWeWereStartedWith) {
    const CoreDumpLimit limit;
    PosixChildLauncher launcher({.coreDumpLimit = limit.before(), .birthNote = {}});
    EXPECT_EQ(softLimitOfAChild(launcher), std::to_string(wanted));
    EXPECT_EQ(softLimitOfATool(launcher), std::to_string(wanted));
    EXPECT_EQ(limitNow().rlim_cur, 0U);
}

TEST_F(CoreDumpLimitTest, ChildrenHaveOursWhereNothingElseIsAskedFor) {
    PosixChildLauncher launcher;
    EXPECT_EQ(softLimitOfAChild(launcher), std::to_string(wanted));
}

}  // namespace
}  // namespace valdorn
