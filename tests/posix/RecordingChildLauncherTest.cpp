#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "platform/posix/RecordingChildLauncher.h"
#include "posix/LedgerStage.h"
#include "support/MemoryFileSystem.h"
#include "support/NoDescriptors.h"

namespace valdorn {

namespace {

// Launches what a test has started already: during each launch it does what the test wants.
class PlayedLauncher : public ChildLauncher {
public:
    // Gives the child's id; nothing when the launch fails.
    using Play = std::function<std::optional<std::int64_t>()>;

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand&,
                                                              ChildHandlers given) override {
        handlers.push_back(std::move(given));
        const auto id = play();
        if (!id)
            return LaunchError{LaunchError::Step::prepare, EMFILE, {}};
        return std::unique_ptr<ChildProcess>(std::make_unique<Played>(*id));
    }
    Result<ChildExit, LaunchError> run(
        const ChildCommand&, const std::function<void(std::string_view chunk)>&) override {
        return ChildExit{};
    }
    void shutDown() override {}

    Play play;
    std::vector<ChildHandlers> handlers;  // one for each launch

private:
    class Played : public ChildProcess {
    public:
        explicit Played(std::int64_t id) : id_(id) {}
        std::int64_t id() const override { return id_; }
        bool isRunning() const override { return true; }
        void terminate() override {}

    private:
        const std::int64_t id_;
    };
};

// Daemons that are known from the notes of their births alone.
class RecordingChildLauncherTest : public LedgerStage {
protected:
    RecordingChildLauncherTest() { recorded.reserve(4); }

    void launch(const PlayedLauncher::Play& play) {
        played.play = play;
        auto child = recording.launch({}, {[](auto, const auto&) {}, [](ChildExit) {}});
        recorded.push_back(child ? std::move(child.value()) : nullptr);
    }

    void launch(const ChildProcess& child) {
        launch([&] {
            writeBirthOf(child);
            return child.id();
        });
    }

    // It cannot be written down.
    void launchUnwritten(const ChildProcess& child) {
        memory.failures["/ledger"] = ENOSPC;
        launch(child);
    }

    // It cannot be looked at.
    void launchUnseen(const ChildProcess& child) {
        std::optional<NoDescriptors> none;
        launch([&] {
            writeBirthOf(child);
            none.emplace();
            return child.id();
        });
    }

    // Before anything of the child was there.
    void failLaunch() {
        launch([] { return std::nullopt; });
    }

    void writeBirthOf(const ChildProcess& child) {
        ASSERT_FALSE(memory.replaceContent("/ledger.birth", noteOf(child.id())));
    }

    // Of the child of that number, which was launched in that place.
    void end(std::size_t number) {
        kill(static_cast<pid_t>(children[number]->id()), SIGKILL);
        ASSERT_TRUE(recorders[number]->waitForRelease());
        tellEnd(number);
    }
    void tellEnd(std::size_t number) { played.handlers[number].onExit({}); }

    bool isNoteThere() const { return memory.exists("/ledger.birth"); }
    bool isNoteOf(const ChildProcess& child) const {
        const auto note = memory.read("/ledger.birth");
        const auto born = note ? birthIn(note.value(), bootId()) : std::nullopt;
        return born && born->pid == child.id();
    }
    DaemonRecords inLedger() const {
        const auto text = memory.read("/ledger");
        return text ? daemonRecordsIn(text.value()).value() : DaemonRecords{};
    }

    // Receives signals, and does nothing about them.
    ChildProcess& startStopped() {
        ChildProcess& child = startHanging();
        const auto id = static_cast<pid_t>(child.id());
        kill(id, SIGSTOP);
        siginfo_t stopped{};
        EXPECT_EQ(waitid(P_PID, static_cast<id_t>(id), &stopped, WSTOPPED), 0);
        return child;
    }

    static bool hasBeenAsked(const ChildProcess& stopped) {
        std::ifstream status("/proc/" + std::to_string(stopped.id()) + "/status");
        std::string word;
        while (status >> word && word != "ShdPnd:") {
        }
        status >> word;
        return (std::stoull(word, nullptr, 16) & 1U << (SIGTERM - 1)) != 0;
    }

    MemoryFileSystem memory;
    DaemonLedger ledger{memory, "/ledger"};
    PlayedLauncher played;
    RecordingChildLauncher recording{played, ledger};
    std::vector<std::unique_ptr<ChildProcess>> recorded;
};

class UnseenDaemonTest : public RecordingChildLauncherTest {
protected:
    void SetUp() override {
        if (!canDoWithoutDescriptors)
            GTEST_SKIP() << whyDescriptorsAreNeeded;
    }
};

TEST_F(RecordingChildLauncherTest, AFailedLaunchLeavesTheNoteOfADaemonThatWasNotWrittenDown) {
    launchUnwritten(startHanging());
    failLaunch();
    ASSERT_TRUE(isNoteThere());
    EXPECT_EQ(DaemonLedger(memory, "/ledger").endLeftovers(longEnough).ended, 1u);
}

TEST_F(RecordingChildLauncherTest, AFailedLaunchTakesAwayTheNoteOfTheChildThatCameToNothing) {
    launch([this]() -> std::optional<std::int64_t> {
        EXPECT_FALSE(memory.replaceContent("/ledger.birth", noteOfNobody()));
        return std::nullopt;
    });
    EXPECT_FALSE(isNoteThere());
}

TEST_F(RecordingChildLauncherTest, AFailedLaunchTakesAwayTheNoteOfADaemonThatEndedMeanwhile) {
    launchUnwritten(startHanging());
    launch([this]() -> std::optional<std::int64_t> {
        end(0);
        return std::nullopt;
    });
    EXPECT_FALSE(isNoteThere());
}

TEST_F(RecordingChildLauncherTest, ADaemonThatWasNotWrittenDownLosesItsNoteAtItsEnd) {
    launchUnwritten(startHanging());
    EXPECT_TRUE(isNoteThere());
    end(0);
    EXPECT_FALSE(isNoteThere());
}

TEST_F(RecordingChildLauncherTest, ADaemonThatEndsDoesNotTakeTheNoteOfAnother) {
    launchUnwritten(startHanging());
    ChildProcess& second = startHanging();
    launchUnwritten(second);
    end(0);
    EXPECT_TRUE(isNoteOf(second));
}

// Between a look at the note and its removal the child could write its own.
TEST_F(RecordingChildLauncherTest, ADaemonThatEndsDuringALaunchTakesNoNoteAway) {
    launchUnwritten(startHanging());
    ChildProcess& second = startHanging();
    launch([&] {
        end(0);
        EXPECT_TRUE(isNoteThere());
        writeBirthOf(second);
        tellEnd(0);
        return second.id();
    });
    EXPECT_TRUE(isNoteOf(second));
    end(1);
    EXPECT_FALSE(isNoteThere());
}

TEST_F(RecordingChildLauncherTest, AQuitDuringALaunchTakesNoNoteAway) {
    ChildProcess& child = startHanging();
    launch([&] {
        writeBirthOf(child);
        ledger.clear();
        ledger.endLeftovers(longEnough);
        EXPECT_TRUE(isNoteThere());
        return child.id();
    });
    EXPECT_FALSE(isNoteThere()) << "it is written down";
}

TEST_F(RecordingChildLauncherTest, AQuitKeepsTheNoteOfADaemonThatItCanNeitherAskNorWriteDown) {
    if (!canDoWithoutDescriptors)
        GTEST_SKIP() << whyDescriptorsAreNeeded;
    launchUnwritten(startHanging());
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_EQ(DaemonLedger(memory, "/ledger").endLeftovers(longEnough).asked, 1u);
}

TEST_F(UnseenDaemonTest, KeepsItsNoteUntilItEnds) {
    launchUnseen(startHanging());
    EXPECT_TRUE(isNoteThere());
    end(0);
    EXPECT_FALSE(isNoteThere());
    EXPECT_FALSE(memory.exists("/ledger"));
}

TEST_F(UnseenDaemonTest, KeepsItsNoteThoughLeftoversAreEnded) {
    launchUnseen(startHanging());
    ledger.endLeftovers(longEnough);
    EXPECT_TRUE(isNoteThere());
}

TEST_F(UnseenDaemonTest, KeepsItsNoteThoughAnotherOneIsNotedThatHasNone) {
    launchUnseen(startHanging());
    ledger.note(startHanging().id());
    EXPECT_TRUE(isNoteOf(*children[0]));
}

TEST_F(UnseenDaemonTest, IsWrittenDownBeforeTheNextOneIsBorn) {
    launchUnseen(startHanging());
    failLaunch();
    ASSERT_EQ(inLedger().daemons.size(), 1u);
    EXPECT_EQ(inLedger().daemons[0].pid, children[0]->id());
    launch(startHanging());
    EXPECT_EQ(inLedger().daemons.size(), 2u);
    EXPECT_FALSE(isNoteThere());
}

TEST_F(UnseenDaemonTest, IsAskedAtAPoliteQuit) {
    ChildProcess& child = startStopped();
    launchUnseen(child);
    ledger.clear();
    EXPECT_TRUE(hasBeenAsked(child));
    EXPECT_FALSE(isNoteThere());
    EXPECT_FALSE(memory.exists("/ledger"));
}

TEST_F(UnseenDaemonTest, IsNotAskedTwice) {
    ChildProcess& child = startStopped();
    launchUnseen(child);
    recorded[0]->terminate();
    ledger.clear();
    EXPECT_FALSE(hasBeenAsked(child));
    EXPECT_FALSE(isNoteThere());
}

TEST_F(UnseenDaemonTest, IsNotAskedAgainAtTheNextStartEither) {
    launchUnseen(startHanging());
    recorded[0]->terminate();
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_FALSE(isNoteThere());
}

TEST_F(UnseenDaemonTest, IsNotAskedWhenTheNoteIsAnothers) {
    ChildProcess& child = startStopped();
    launchUnseen(child);
    ChildProcess& other = startStopped();
    writeBirthOf(other);
    ledger.clear();
    EXPECT_FALSE(hasBeenAsked(child));
    EXPECT_FALSE(hasBeenAsked(other));
    EXPECT_FALSE(isNoteThere()) << "of use to nobody";
}

TEST_F(UnseenDaemonTest, IsLeftToTheNextStartWhenItCannotBeLookedAtEither) {
    launchUnseen(startHanging());
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_EQ(DaemonLedger(memory, "/ledger").endLeftovers(longEnough).ended, 1u);
    EXPECT_FALSE(isNoteThere());
}

TEST_F(UnseenDaemonTest, IsNotLeftToTheNextStartWhenItHasEnded) {
    launchUnseen(startHanging());
    kill(static_cast<pid_t>(children[0]->id()), SIGKILL);
    ASSERT_TRUE(recorders[0]->waitForRelease());
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_FALSE(isNoteThere());
}

TEST_F(UnseenDaemonTest, LosesItsNoteWhenItEndsAfterAPoliteQuit) {
    launchUnseen(startHanging());
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_TRUE(isNoteThere());
    end(0);
    EXPECT_FALSE(isNoteThere());
}

}  // namespace

}  // namespace valdorn
