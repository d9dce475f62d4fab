#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <future>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include "platform/posix/ProcessFacts.h"
#include "posix/HeldWrites.h"
#include "posix/LedgerStage.h"
#include "support/Skipping.h"

namespace valdorn {

namespace {

using namespace std::chrono_literals;

// Killed between the launch and the line in the ledger.
class UnnotedDaemonTest : public LedgerStage {
protected:
    ChildProcess& startUnnoted(const std::string& name = "hang") {
        return startBy(noting, childCommand(name));
    }

    void expectUntouchedWith(const std::string& note) {
        ChildProcess& child = startUnnoted();
        ASSERT_FALSE(files.replaceContent(birthPath(), note));
        EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
        EXPECT_TRUE(child.isRunning());
        EXPECT_FALSE(files.exists(birthPath()));
    }

    std::string birthPath() const { return path() + ".birth"; }
    std::string birth() const { return files.read(birthPath()).value(); }

    PosixChildLauncher noting{{.coreDumpLimit = {}, .birthNote = newLedger()->birthNote()}};
};

TEST_F(UnnotedDaemonTest, IsEnded) {
    ChildProcess& child = startUnnoted();
    const auto outcome = newLedger()->endLeftovers(longEnough);
    EXPECT_EQ(outcome.asked, 1u);
    EXPECT_EQ(outcome.ended, 1u);
    ASSERT_TRUE(recorders[0]->waitForExit());
    EXPECT_EQ(recorders[0]->exit(), (ChildExit{ChildExit::Kind::signalled, SIGTERM}));
    EXPECT_FALSE(files.exists(birthPath()));
    EXPECT_FALSE(child.isRunning());
}

TEST_F(UnnotedDaemonTest, IsEndedBesideThoseThatWereNoted) {
    newLedger()->note(startUnnoted().id());
    startUnnoted();
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).ended, 2u);
}

TEST_F(UnnotedDaemonTest, IsAskedOnceWhenItWasNotedAfterAll) {
    const auto killed = newLedger();
    ChildProcess& stubborn = startUnnoted("ignore_term");
    const std::string note = birth();
    killed->note(stubborn.id());
    EXPECT_FALSE(files.exists(birthPath()));
    ASSERT_FALSE(files.replaceContent(birthPath(), note));
    EXPECT_EQ(newLedger()->endLeftovers(1ms).asked, 1u);
    EXPECT_EQ(written().daemons.size(), 1u);
}

TEST_F(UnnotedDaemonTest, IsNotedAgainWhenItDoesNotEnd) {
    ChildProcess& stubborn = startUnnoted("ignore_term");
    EXPECT_EQ(newLedger()->endLeftovers(1ms).asked, 1u);
    ASSERT_EQ(written().daemons.size(), 1u);
    EXPECT_EQ(written().daemons[0].pid, stubborn.id());
}

TEST_F(UnnotedDaemonTest, IsNotLookedForAfterAPoliteQuit) {
    const auto ledger = newLedger();
    ChildProcess& stubborn = startUnnoted("ignore_term");
    ledger->clear();
    EXPECT_EQ(newLedger()->endLeftovers(1ms).asked, 0u);
    EXPECT_TRUE(stubborn.isRunning());
}

TEST_F(UnnotedDaemonTest, WithTheBirthOfAnotherIsLeftAlone) {
    startUnnoted();
    std::string note = birth();
    const std::string ticks =
        std::to_string(factsAbout(static_cast<pid_t>(children[0]->id()))->startTicks);
    const auto place = note.find(' ' + ticks + ' ');
    ASSERT_NE(place, std::string::npos);
    note.replace(place + 1, 1, ticks[0] == '9' ? "8" : "9");
    ASSERT_FALSE(files.replaceContent(birthPath(), note));
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
    EXPECT_TRUE(children[0]->isRunning());
}

TEST_F(UnnotedDaemonTest, OfAnotherBootIsLeftAlone) {
    startUnnoted();
    expectUntouchedWith("boot another\n" + birth().substr(birth().find('\n') + 1));
}

TEST_F(UnnotedDaemonTest, WithANoteThatWasCutShortIsLeftAlone) {
    startUnnoted();
    const std::string note = birth();
    for (const std::size_t length : {std::size_t{0}, note.find('\n') + 1, note.find(')')})
        expectUntouchedWith(note.substr(0, length));
}

TEST_F(UnnotedDaemonTest, IsLaunchedThoughTheNoteCannotBeWritten) {
    std::filesystem::create_directory(birthPath());
    EXPECT_TRUE(startUnnoted().isRunning());
    std::filesystem::remove(birthPath());
    ASSERT_EQ(mkfifo(birthPath().c_str(), 0600), 0);
    EXPECT_TRUE(startUnnoted().isRunning());
}

TEST_F(UnnotedDaemonTest, OutlivesAWriteToANamedPipeThatNobodyReadsAnyMore) {
    startUnnoted();  // its listener is no child of the held thread
    std::filesystem::remove(birthPath());
    ASSERT_EQ(mkfifo(birthPath().c_str(), 0600), 0);
    Descriptor reader(open(birthPath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    ChildRecorder recorder;
    std::promise<Descriptor> held;
    std::thread launching([&] {
        Descriptor writes = HeldWrites::hold();
        const bool isHeld(writes);
        held.set_value(std::move(writes));
        if (!isHeld)
            return;
        EXPECT_TRUE(noting.launch(childCommand("play", {"exit:7"}), recorder.handlers()).ok());
    });
    const Descriptor writes = held.get_future().get();
    const bool isHeld(writes);
    if (isHeld) {
        HeldWrites::letGoOn(writes, [&](std::size_t lengthBytes) {
            if (lengthBytes == newLedger()->birthNote().heading.size())
                reader.reset();
        });
    }
    launching.join();
    if (!isHeld)
        return leaveOut("writes cannot be held here");
    ASSERT_FALSE(reader) << "the birth is not written";
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::exited, 7}));
}

TEST_F(UnnotedDaemonTest, WritesDownNothingOfAForegroundRun) {
    const auto ended = noting.run(childCommand("echo"), [](std::string_view) {});
    ASSERT_TRUE(ended.ok());
    EXPECT_FALSE(files.exists(birthPath()));
}

TEST_F(UnnotedDaemonTest, InheritsNothingFromTheNote) {
    ChildRecorder plain;
    ASSERT_TRUE(launcher.launch(childCommand("print_descriptors"), plain.handlers()).ok());
    ChildRecorder noted;
    ASSERT_TRUE(noting.launch(childCommand("print_descriptors"), noted.handlers()).ok());
    ASSERT_TRUE(plain.waitForRelease() && noted.waitForRelease());
    const auto count = [](const std::string& text) {
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(count(noted.output()), count(plain.output()));
}

TEST_F(UnnotedDaemonTest, IsEndedWhereTheLedgerCouldNotBeWritten) {
    const auto killed = newLedger();
    ChildProcess& child = startUnnoted();
    std::filesystem::create_directory(path());
    killed->note(child.id());
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).ended, 1u);
}

TEST_F(UnnotedDaemonTest, KeepsWhatCannotBeReadAsLongAsItMayTellOfSomebody) {
    const auto ledger = newLedger();
    std::filesystem::create_directory(birthPath());
    std::filesystem::create_directory(path());
    ledger->note(startHanging().id());
    EXPECT_TRUE(files.exists(birthPath()));
    std::filesystem::remove(path());
    ledger->note(startHanging().id());
    EXPECT_FALSE(files.exists(birthPath())) << "all are written down";
}

TEST_F(UnnotedDaemonTest, KeepsItsNoteWhereALeftoverCouldNotBeWrittenDown) {
    ChildProcess& stubborn = startUnnoted("ignore_term");
    const auto ledger = newLedger();
    std::filesystem::create_directory(path());
    EXPECT_EQ(ledger->endLeftovers(1ms).asked, 1u);
    std::filesystem::remove(path());
    EXPECT_EQ(newLedger()->endLeftovers(1ms).asked, 1u);
    EXPECT_TRUE(stubborn.isRunning());
}

TEST_F(UnnotedDaemonTest, KeepsItsNoteWhereNoneOfTheLeftoversCouldBeWrittenDown) {
    newLedger()->note(startUnnoted("ignore_term").id());
    ChildProcess& unnoted = startUnnoted("ignore_term");
    const auto ledger = newLedger();
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());
    EXPECT_EQ(ledger->endLeftovers(1ms).asked, 2u);
    std::filesystem::remove(path());
    EXPECT_EQ(newLedger()->endLeftovers(1ms).asked, 1u);
    EXPECT_TRUE(unnoted.isRunning());
}

}  // namespace

}  // namespace valdorn
