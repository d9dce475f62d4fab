#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/RecordingChildLauncher.h"
#include "posix/HiddenChild.h"
#include "posix/LedgerStage.h"
#include "support/MemoryChildLauncher.h"
#include "support/MemoryFileSystem.h"
#include "support/NoDescriptors.h"

namespace valdorn {

namespace {

using namespace std::chrono_literals;

class DaemonLedgerTest : public LedgerStage {
protected:
    // Changes what the killed instance has written about its one daemon.
    void forge(const std::function<void(DaemonRecords&)>& change) {
        DaemonRecords records = written();
        change(records);
        ASSERT_FALSE(files.replaceContent(path(), textOf(records)));
    }

    // A daemon left behind under a record that is changed in one point is not touched.
    void expectUntouchedAfter(const std::function<void(DaemonRecords&)>& change) {
        ChildProcess& stranger = startHanging();
        newLedger()->note(stranger.id());
        forge(change);
        const auto outcome = newLedger()->endLeftovers(longEnough);
        EXPECT_EQ(outcome.asked, 0u);
        EXPECT_TRUE(stranger.isRunning());
        EXPECT_FALSE(files.exists(path())) << "the record is dropped";
    }
};

TEST_F(DaemonLedgerTest, EndsWhatAKilledInstanceHasLeft) {
    ChildProcess& first = startHanging();
    ChildProcess& second = startHanging();
    {
        const auto killed = newLedger();
        killed->note(first.id());
        killed->note(second.id());
    }
    const auto outcome = newLedger()->endLeftovers(longEnough);
    EXPECT_EQ(outcome.asked, 2u);
    EXPECT_EQ(outcome.ended, 2u);
    EXPECT_FALSE(first.isRunning());
    EXPECT_FALSE(second.isRunning());
    ASSERT_TRUE(recorders[0]->waitForExit());
    EXPECT_EQ(recorders[0]->exit(), (ChildExit{ChildExit::Kind::signalled, SIGTERM}));
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, AsksPolitelyOnlyAndAgainAtTheNextStart) {
    ChildProcess& stubborn = start(childCommand("ignore_term"));
    newLedger()->note(stubborn.id());
    for (int start = 1; start <= 2; ++start) {
        const auto outcome = newLedger()->endLeftovers(20ms);
        EXPECT_EQ(outcome.asked, 1u);
        EXPECT_EQ(outcome.ended, 0u);
        EXPECT_TRUE(stubborn.isRunning());
        ASSERT_EQ(written().daemons.size(), 1u);
        EXPECT_EQ(written().daemons[0].pid, stubborn.id());
        // Two requests at once would count as one.
        EXPECT_TRUE(recorders[0]->waitForText(start == 1 ? "asked\n" : "asked\nasked\n"));
    }
}

TEST_F(DaemonLedgerTest, WaitsForAllTogetherAndNoLonger) {
    for (int count = 0; count < 3; ++count)
        newLedger()->note(start(childCommand("ignore_term")).id());
    const auto before = std::chrono::steady_clock::now();
    newLedger()->endLeftovers(200ms);
    const auto taken = std::chrono::steady_clock::now() - before;
    EXPECT_GE(taken, 200ms);
    EXPECT_LT(taken, 600ms) << "once each";
}

TEST_F(DaemonLedgerTest, KeepsEarlierLeftoversWhenItNotesItsOwn) {
    newLedger()->note(startHanging().id());
    newLedger()->note(startHanging().id());
    EXPECT_EQ(written().daemons.size(), 2u);
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).ended, 2u);
}

TEST_F(DaemonLedgerTest, DoesNotAskItsOwnDaemonsToEnd) {
    const auto ledger = newLedger();
    ChildProcess& own = startHanging();
    ledger->note(own.id());
    EXPECT_EQ(ledger->endLeftovers(longEnough).asked, 0u);
    EXPECT_TRUE(own.isRunning());
    EXPECT_EQ(written().daemons.size(), 1u);
}

TEST_F(DaemonLedgerTest, LeavesAStrangerWithTheSameIdAlone) {
    expectUntouchedAfter([](DaemonRecords& records) { --records.daemons[0].startTicks; });
}

TEST_F(DaemonLedgerTest, LeavesAnotherExecutableAlone) {
    expectUntouchedAfter([](DaemonRecords& records) { records.daemons[0].executable = "/bin/x"; });
}

TEST_F(DaemonLedgerTest, LeavesAnotherFolderAlone) {
    expectUntouchedAfter([](DaemonRecords& records) { records.daemons[0].workingFolder = "/usr"; });
}

TEST_F(DaemonLedgerTest, LeavesAnotherUsersProcessAlone) {
    expectUntouchedAfter([](DaemonRecords& records) { ++records.daemons[0].owner; });
}

TEST_F(DaemonLedgerTest, LeavesEverybodyAloneAfterAReboot) {
    expectUntouchedAfter([](DaemonRecords& records) { records.boot = "another boot"; });
}

TEST_F(DaemonLedgerTest, RecognisesADaemonWhoseExecutableWasReplaced) {
    const std::string program = folder / "runner";
    std::filesystem::copy_file(childPath("hang"), program);
    ChildProcess& daemon = start({program, {}, "/", {}});
    newLedger()->note(daemon.id());
    std::filesystem::copy_file(childPath("echo"), folder / "newer");
    std::filesystem::rename(folder / "newer", program);
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).ended, 1u);
    EXPECT_FALSE(daemon.isRunning());
}

TEST_F(DaemonLedgerTest, RecognisesAScriptByItsInterpreter) {
    const std::string script = folder / "runner.sh";
    ASSERT_FALSE(
        files.replaceContent(script, "#!/bin/sh\necho ready\nread x < " + path() + ".fifo"));
    ASSERT_EQ(mkfifo((path() + ".fifo").c_str(), 0600), 0);
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    newLedger()->note(start({script, {}, folder.path(), {}}).id());
    EXPECT_EQ(written().daemons.at(0).workingFolder, folder.path());
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).ended, 1u);
}

TEST_F(DaemonLedgerTest, IgnoresAFileThatMakesNoSense) {
    ASSERT_FALSE(files.replaceContent(path(), std::string("\0garbage\xff\nend\n", 14)));
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
}

TEST_F(DaemonLedgerTest, IgnoresAFileThatWasCutShort) {
    ChildProcess& child = startHanging();
    newLedger()->note(child.id());
    std::filesystem::resize_file(path(), std::filesystem::file_size(path()) - 1);
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
    EXPECT_TRUE(child.isRunning());
}

TEST_F(DaemonLedgerTest, IgnoresAFolderInPlaceOfTheFile) {
    std::filesystem::create_directory(path());
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
}

TEST_F(DaemonLedgerTest, AFullDiskCostsOnlyTheRecord) {
    MemoryFileSystem full;
    full.failures["/ledger"] = ENOSPC;
    DaemonLedger ledger(full, "/ledger");
    const auto entry = ledger.note(startHanging().id());
    ledger.forget(entry);
    ledger.clear();
    EXPECT_EQ(ledger.endLeftovers(longEnough).asked, 0u);
}

TEST_F(DaemonLedgerTest, ForgetsAnEndedDaemonOnce) {
    const auto ledger = newLedger();
    const auto first = ledger->note(startHanging().id());
    ledger->note(startHanging().id());
    ledger->forget(first);
    ledger->forget(first);
    ASSERT_EQ(written().daemons.size(), 1u);
    EXPECT_EQ(written().daemons[0].pid, children[1]->id());
}

TEST_F(DaemonLedgerTest, NotesNothingOfAProcessThatHasEnded) {
    newLedger()->note(idOfNobody);
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, APoliteQuitLeavesOnlyWhatWouldNotEnd) {
    ChildProcess& stubborn = start(childCommand("ignore_term"));
    newLedger()->note(stubborn.id());
    const auto ledger = newLedger();
    ledger->endLeftovers(1ms);
    ledger->note(startHanging().id());
    ledger->clear();
    ASSERT_EQ(written().daemons.size(), 1u);
    EXPECT_EQ(written().daemons[0].pid, stubborn.id());
}

TEST_F(DaemonLedgerTest, APoliteQuitWithoutLeftoversLeavesNoFile) {
    const auto ledger = newLedger();
    ledger->note(startHanging().id());
    EXPECT_TRUE(files.exists(path()));
    ledger->clear();
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, RecordingLauncherNotesAChildUntilItsEnd) {
    const auto ledger = newLedger();
    RecordingChildLauncher recording(launcher, *ledger);
    ChildRecorder recorder;
    const auto child = recording.launch(childCommand("hang"), recorder.handlers());
    ASSERT_TRUE(child.ok());
    ASSERT_TRUE(recorder.waitForText("ready"));
    ASSERT_EQ(written().daemons.size(), 1u);
    EXPECT_EQ(written().daemons[0].pid, child.value()->id());
    EXPECT_EQ(written().daemons[0].executable, childPath("hang"));
    EXPECT_EQ(written().daemons[0].workingFolder, "/");
    child.value()->terminate();
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::signalled, SIGTERM}));
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, APoliteQuitAsksTheDaemonsThatNobodyHasAsked) {
    const auto ledger = newLedger();
    RecordingChildLauncher recording(launcher, *ledger);
    ChildRecorder forgotten;
    ASSERT_TRUE(recording.launch(childCommand("hang"), forgotten.handlers()).ok());
    ASSERT_TRUE(forgotten.waitForText("ready"));
    ledger->clear();
    ASSERT_TRUE(forgotten.waitForRelease());
    EXPECT_EQ(forgotten.exit(), (ChildExit{ChildExit::Kind::signalled, SIGTERM}));
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, APoliteQuitAsksAWrapperThatHasBecomeTheRealProgram) {
    ChildProcess& wrapper =
        start({"/bin/sh", {"-c", "echo ready; kill -STOP $$; exec " + childPath("hang")}, "/", {}});
    const auto id = static_cast<pid_t>(wrapper.id());
    siginfo_t stopped{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(id), &stopped, WSTOPPED), 0);
    const auto ledger = newLedger();
    ledger->note(id);
    kill(id, SIGCONT);
    ASSERT_TRUE(recorders.back()->waitForBytes(std::string_view("ready\nready").size()));
    ledger->clear();
    ASSERT_TRUE(recorders.back()->waitForExit());
    EXPECT_EQ(recorders.back()->exit(), (ChildExit{ChildExit::Kind::signalled, SIGTERM}));
}

TEST_F(DaemonLedgerTest, APoliteQuitAsksNoDaemonTwice) {
    const auto ledger = newLedger();
    RecordingChildLauncher recording(launcher, *ledger);
    ChildRecorder recorder;
    // The first request only makes it speak; a second one would end it.
    const ChildCommand command{
        "/bin/sh",
        {"-c", "trap 'echo asked; trap - TERM' TERM; echo ready; while :; do " + childPath("play") +
                   " exit:0; done"},
        "/",
        {}};
    const auto child = recording.launch(command, recorder.handlers());
    ASSERT_TRUE(child.ok());
    ASSERT_TRUE(recorder.waitForText("ready"));
    child.value()->terminate();
    ASSERT_TRUE(recorder.waitForText("asked"));
    ledger->clear();
    EXPECT_TRUE(child.value()->isRunning());
    kill(static_cast<pid_t>(child.value()->id()), SIGKILL);
    ASSERT_TRUE(recorder.waitForRelease());
    EXPECT_EQ(recorder.exit(), (ChildExit{ChildExit::Kind::signalled, SIGKILL}));
}

TEST_F(DaemonLedgerTest, RecordingLauncherForgetsChildrenThatEndAtOnce) {
    const auto ledger = newLedger();
    RecordingChildLauncher recording(launcher, *ledger);
    for (int round = 0; round < 100; ++round) {
        ChildRecorder recorder;
        const auto child = recording.launch(childCommand("play", {"exit:0"}), recorder.handlers());
        ASSERT_TRUE(recorder.waitForRelease());
        ASSERT_TRUE(written().daemons.empty());
    }
}

// A launcher whose children end before launch() has returned, as this process.
class HastyLauncher : public ChildLauncher {
public:
    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand&,
                                                              ChildHandlers handlers) override {
        handlers.onExit({});
        return std::unique_ptr<ChildProcess>(std::make_unique<Ended>());
    }
    Result<ChildExit, LaunchError> run(
        const ChildCommand&, const std::function<void(std::string_view chunk)>&) override {
        return ChildExit{};
    }
    void shutDown() override {}

private:
    class Ended : public ChildProcess {
    public:
        std::int64_t id() const override { return getpid(); }
        bool isRunning() const override { return false; }
        void terminate() override {}
    };
};

TEST_F(DaemonLedgerTest, RecordingLauncherNotesNobodyElseUnderTheIdOfAnEndedChild) {
    HastyLauncher hasty;
    const auto ledger = newLedger();
    RecordingChildLauncher recording(hasty, *ledger);
    ChildRecorder recorder;
    ASSERT_FALSE(files.replaceContent(path() + ".birth", noteOfNobody()));
    ASSERT_TRUE(recording.launch({}, recorder.handlers()).ok());
    EXPECT_TRUE(recorder.waitForExit());
    EXPECT_FALSE(files.exists(path()));
    EXPECT_FALSE(files.exists(path() + ".birth"));
}

TEST_F(DaemonLedgerTest, RecordingLauncherNotesNeitherFailuresNorRuns) {
    MemoryChildLauncher inner;
    MemoryFileSystem memory;
    DaemonLedger ledger(memory, "/ledger");
    RecordingChildLauncher recording(inner, ledger);
    ChildRecorder recorder;
    ASSERT_FALSE(memory.replaceContent("/ledger.birth", noteOfNobody()));
    inner.failNextLaunch = LaunchError{LaunchError::Step::execute, ENOENT, "/x"};
    EXPECT_FALSE(recording.launch({}, recorder.handlers()).ok());
    EXPECT_FALSE(memory.exists("/ledger.birth"));
    EXPECT_TRUE(recording.run({}, [](std::string_view) {}).ok());
    recording.shutDown();
    EXPECT_FALSE(recording.run({}, [](std::string_view) {}).ok());
    EXPECT_TRUE(memory.atomicReplacements.empty());
}

TEST_F(DaemonLedgerTest, APoliteQuitLeavesWrittenDownWhatItCouldNotAsk) {
    if (!canDoWithoutDescriptors)
        GTEST_SKIP() << whyDescriptorsAreNeeded;
    MemoryFileSystem memory;
    DaemonLedger ledger(memory, "/ledger");
    ledger.note(startHanging().id());
    {
        const NoDescriptors none;
        ledger.clear();
    }
    EXPECT_TRUE(memory.exists("/ledger"));
    EXPECT_EQ(DaemonLedger(memory, "/ledger").endLeftovers(longEnough).ended, 1u);
}

TEST_F(DaemonLedgerTest, ForgetsARecordWhoseIdHasGoneToAProcessThatCannotBeLookedAt) {
    const HiddenChild stranger;
    const WithoutPower powerless;
    ASSERT_FALSE(factsAbout(stranger.id()));
    ProcessFacts earlier = birthOf(stranger.id()).value();
    --earlier.startTicks;
    ASSERT_FALSE(files.replaceContent(path(), textOf({bootId(), {earlier}})));
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
    EXPECT_FALSE(files.exists(path()));
}

TEST_F(DaemonLedgerTest, KeepsTheRecordOfADaemonThatCannotBeLookedAt) {
    const HiddenChild daemon;
    const WithoutPower powerless;
    const ProcessFacts facts = birthOf(daemon.id()).value();
    ASSERT_FALSE(files.replaceContent(path(), textOf({bootId(), {facts}})));
    EXPECT_EQ(newLedger()->endLeftovers(longEnough).asked, 0u);
    EXPECT_EQ(written().daemons.size(), 1u);
}

}  // namespace

}  // namespace valdorn
