#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/Registration.h"
#include "support/MemoryChildLauncher.h"

namespace valdorn {
namespace {

class RegistrationTest : public testing::Test {
protected:
    RegistrationOutcome runWith(std::vector<std::string> chunks, ChildExit exit) {
        launcher.runScript.push_back(ScriptedRun{std::move(chunks), exit});
        return Registration(launcher, {"/act_runner", {"register"}, "/folder", {}}).run();
    }

    RegistrationOutcome failWith(std::vector<std::string> chunks) {
        return runWith(std::move(chunks), {ChildExit::Kind::exited, 1});
    }

    static RegistrationOutcome refused(const std::string& text) { return RunnerError{text}; }

    MemoryChildLauncher launcher;
};

TEST_F(RegistrationTest, ZeroIsSuccessWhateverWasPrinted) {
    EXPECT_EQ(runWith({"Error: not really\n"}, {ChildExit::Kind::exited, 0}),
              RegistrationOutcome(Registered{}));
}

TEST_F(RegistrationTest, MessageIsTheLastLine) {
    EXPECT_EQ(failWith({"INFO registering\nError: instance address is empty\n"}),
              refused("Error: instance address is empty"));
    EXPECT_EQ(failWith({"one\ntwo"}), refused("two"));
}

TEST_F(RegistrationTest, RefusalIsAnotherByItsMessage) {
    EXPECT_NE(refused("one"), refused("two"));
}

TEST_F(RegistrationTest, MessageIsTheLastLineThatHasText) {
    EXPECT_EQ(failWith({"one\ntwo\n\n\n\n"}), refused("two"));
    EXPECT_EQ(failWith({"one\n   \n"}), refused("   "));
}

TEST_F(RegistrationTest, MessageDoesNotDependOnTheChunks) {
    std::vector<std::string> bytes;
    for (const char c : std::string("one\nError: caf\xC3\xA9\n\n"))
        bytes.emplace_back(1, c);
    EXPECT_EQ(failWith(bytes), refused("Error: caf\xC3\xA9"));
}

TEST_F(RegistrationTest, SilentFailureHasAnEmptyDescription) {
    EXPECT_EQ(failWith({}), refused(""));
}

TEST_F(RegistrationTest, NothingButEmptyLinesIsTheMessageAsItIs) {
    EXPECT_EQ(failWith({"\n\n"}), refused("\n\n"));
}

TEST_F(RegistrationTest, OutputThatIsNotUtf8NamesTheStatus) {
    EXPECT_EQ(failWith({"Error: \xFF\n"}), refused("act_runner register failed (exit 1)"));
    EXPECT_EQ(failWith({"\xFF\nError: readable\n"}),
              refused("act_runner register failed (exit 1)"));
    EXPECT_EQ(runWith({"x \xE2\x80"}, {ChildExit::Kind::exited, 137}),
              refused("act_runner register failed (exit 137)"));
}

TEST_F(RegistrationTest, SignalIsAFailureToo) {
    EXPECT_EQ(runWith({"working\n"}, {ChildExit::Kind::signalled, 9}), refused("working"));
    EXPECT_EQ(runWith({"\xFF"}, {ChildExit::Kind::signalled, 9}),
              refused("act_runner register failed (exit 9)"));
}

TEST_F(RegistrationTest, LaunchErrorIsHandedOnAsItIs) {
    const LaunchError error{LaunchError::Step::execute, ENOENT, "/act_runner"};
    launcher.runScript.emplace_back(error);
    const auto outcome = Registration(launcher, {"/act_runner", {}, "/folder", {}}).run();
    EXPECT_EQ(outcome, RegistrationOutcome(error));
    EXPECT_NE(error.description().find("/act_runner"), std::string::npos);
}

TEST_F(RegistrationTest, FloodWithoutLineEndsKeepsOnlyTheTail) {
    RegistrationOutput output;
    const std::string chunk(65536, 'x');
    for (int count = 0; count < 100; ++count)
        output.append(chunk);
    output.append("the end");
    const std::string message = output.message(1);
    EXPECT_LE(message.size(), 1024U * 1024);
    EXPECT_TRUE(message.ends_with("xxxthe end"));
}

TEST_F(RegistrationTest, LineIsCutToItsEndWhenItIsOneByteTooLong) {
    const std::string longest(std::size_t{1024} * 1024, 'x');
    RegistrationOutput output;
    output.append(longest);
    EXPECT_TRUE(output.message(1) == longest);
    output.append("y");
    const std::string tail(7999, 'x');
    EXPECT_EQ(output.message(1), tail + "y");
}

TEST_F(RegistrationTest, FloodIsStillJudgedAsUtf8) {
    std::string dashes;
    for (int count = 0; count < 700000; ++count)
        dashes += "\xE2\x80\x94";
    RegistrationOutput good;
    RegistrationOutput bad;
    bad.append("\xFF");
    // Pieces of 1000 bytes cut characters in two, also where the line is cut.
    for (std::size_t from = 0; from < dashes.size(); from += 1000) {
        good.append(std::string_view(dashes).substr(from, 1000));
        bad.append(std::string_view(dashes).substr(from, 1000));
    }
    RegistrationOutput badLineBefore;
    badLineBefore.append("\xFF\n");
    badLineBefore.append(dashes);
    EXPECT_EQ(badLineBefore.message(3), "act_runner register failed (exit 3)");
    EXPECT_TRUE(dashes.ends_with(good.message(3)));
    EXPECT_EQ(bad.message(3), "act_runner register failed (exit 3)");
}

}  // namespace
}  // namespace valdorn
