#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/posix/ProcessFacts.h"
#include "posix/PosixStage.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

namespace {

const ProcessFacts daemon{12, 3456, 1000, "/bin/runner", "/home/me"};

TEST(ProcessFactsTest, KnowsThisProcess) {
    const auto facts = factsAbout(getpid());
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->pid, getpid());
    EXPECT_EQ(facts->owner, geteuid());
    EXPECT_EQ(facts->executable, std::filesystem::read_symlink("/proc/self/exe"));
    EXPECT_EQ(facts->workingFolder, std::filesystem::current_path());
    EXPECT_GT(facts->startTicks, 0u);
    EXPECT_EQ(factsAbout(getpid()), facts);
}

TEST(ProcessFactsTest, KnowsNothingOfAProcessThatIsNotThere) {
    EXPECT_EQ(factsAbout(0x3fffffff), std::nullopt);
}

TEST(ProcessFactsTest, ReadsPastANameThatLooksLikeFields) {
    const TemporaryFolder folder;
    const std::string program = folder / "a) R 1 (b";
    std::filesystem::copy_file(childPath("hang"), program);
    PosixChildLauncher launcher;
    ChildRecorder plain;
    ChildRecorder odd;
    const auto first = launcher.launch(childCommand("hang"), plain.handlers());
    const auto second = launcher.launch({program, {}, "/", {}}, odd.handlers());
    ASSERT_TRUE(first.ok() && second.ok());
    const auto plainFacts = factsAbout(static_cast<pid_t>(first.value()->id()));
    const auto oddFacts = factsAbout(static_cast<pid_t>(second.value()->id()));
    ASSERT_TRUE(plainFacts && oddFacts);
    EXPECT_EQ(oddFacts->executable, program);
    // Started one after the other: within ten seconds of a hundred ticks each.
    EXPECT_LT(oddFacts->startTicks - plainFacts->startTicks, 1000u);
    first.value()->terminate();
    second.value()->terminate();
    EXPECT_TRUE(plain.waitForRelease());
    EXPECT_TRUE(odd.waitForRelease());
}

TEST(ProcessFactsTest, IsTheSameOnlyWhenEverythingAgrees) {
    EXPECT_TRUE(daemon.isSameProcessAs(daemon));
    const auto differs = [](auto change) {
        ProcessFacts other = daemon;
        change(other);
        return !other.isSameProcessAs(daemon) && !daemon.isSameProcessAs(other);
    };
    EXPECT_TRUE(differs([](ProcessFacts& other) { other.pid = 13; }));
    EXPECT_TRUE(differs([](ProcessFacts& other) { other.startTicks = 3457; }));
    EXPECT_TRUE(differs([](ProcessFacts& other) { other.owner = 1001; }));
    EXPECT_TRUE(differs([](ProcessFacts& other) { other.executable = "/bin/other"; }));
    EXPECT_TRUE(differs([](ProcessFacts& other) { other.workingFolder = "/home/you"; }));
}

TEST(ProcessFactsTest, IsTheSameWhenItsExecutableOrFolderIsGone) {
    ProcessFacts now = daemon;
    now.executable += " (deleted)";
    now.workingFolder += " (deleted)";
    EXPECT_TRUE(now.isSameProcessAs(daemon));
    EXPECT_TRUE(daemon.isSameProcessAs(now));
}

TEST(ProcessFactsTest, TheBootHasAName) {
    EXPECT_EQ(bootId().size(), 36u);
    EXPECT_EQ(bootId(), bootId());
}

TEST(ProcessFactsTest, BirthAgreesWithTheOtherFacts) {
    const auto birth = birthOf(getpid());
    ASSERT_TRUE(birth);
    EXPECT_TRUE(birth->hasSameBirthAs(*factsAbout(getpid())));
    EXPECT_FALSE(birthOf(0x3fffffff));
}

}  // namespace

}  // namespace valdorn
