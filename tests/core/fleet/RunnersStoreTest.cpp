#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fleet/LogPath.h"
#include "fleet/RunnerRecords.h"
#include "fleet/RunnersStore.h"
#include "runner/Config.h"
#include "support/FakeWorld.h"
#include "support/FaultyFileSystem.h"

namespace valdorn {
namespace {

const std::string support = FakeWorld::supportFolder;
const std::string listPath = support + "/runners.json";

class RunnersStoreTest : public testing::Test {
protected:
    void hasFile(const std::vector<RunnerConfig>& records) { world.saveFleet(records); }

    std::shared_ptr<RunnersStore> open() { return RunnersStore::create(world.services()); }

    std::vector<RunnerConfig> saved() {
        return RunnerRecords::decode(world.files.files[listPath]).value();
    }

    std::size_t saves() { return world.files.contentReplacements.size(); }

    static std::vector<RunnerConfig> recordsOf(const RunnersStore& store) {
        std::vector<RunnerConfig> records;
        for (const auto& runner : store.runners())
            records.push_back(runner->config());
        return records;
    }

    FakeWorld world;
};

// Loading and migration.

TEST_F(RunnersStoreTest, MakesTheSupportFolder) {
    open();
    EXPECT_EQ(world.files.foldersMade, (std::vector<std::string>{support}));
}

TEST_F(RunnersStoreTest, LoadsTheListInItsOrder) {
    const std::vector records = {FakeWorld::record("b"), FakeWorld::record("a")};
    hasFile(records);
    EXPECT_EQ(recordsOf(*open()), records);
    EXPECT_EQ(saves(), 0U);
}

TEST_F(RunnersStoreTest, LoadsRecordsOfTheSameIdBoth) {
    const std::vector records = {FakeWorld::record("a"), FakeWorld::record("a")};
    hasFile(records);
    EXPECT_EQ(recordsOf(*open()), records);
}

TEST_F(RunnersStoreTest, StartsNothing) {
    world.markRegistered("a");
    hasFile({FakeWorld::record("a")});
    open();
    world.queue.runPosted();
    EXPECT_TRUE(world.launcher.launches.empty());
}

const RunnerConfig migrated{"legacy", "ada", "http://gitea.test", "linux,x", "/tools", true};

class Migration : public RunnersStoreTest {
protected:
    Migration() {
        world.defaults.strings = {{"runnerName", "ada"},
                                  {"instanceURL", "http://gitea.test"},
                                  {"labels", "linux,x"},
                                  {"extraPath", "/tools"}};
    }

    void expectMigration() {
        EXPECT_EQ(recordsOf(*open()), std::vector{migrated});
        EXPECT_EQ(saved(), std::vector{migrated});
        EXPECT_EQ(saves(), 1U);
        EXPECT_TRUE(world.files.atomicReplacements.empty());
        EXPECT_EQ(world.defaults.strings.size(), 4U);
        EXPECT_EQ(world.defaults.writes, 0);
    }
};

TEST_F(Migration, HappensWithoutAFile) {
    expectMigration();
}

TEST_F(Migration, HappensWithAnUnreadableFile) {
    world.files.folders.insert(listPath);
    EXPECT_EQ(recordsOf(*open()), std::vector{migrated});
}

TEST_F(Migration, HappensWithACorruptFile) {
    world.files.files[listPath] = "{ not json";
    expectMigration();
}

TEST_F(Migration, HappensWithAnEmptyArray) {
    world.files.files[listPath] = "[]";
    expectMigration();
}

TEST_F(Migration, HappensWhenARecordLacksAKey) {
    world.files.files[listPath] =
        R"([{"id":"a","name":"n","instanceURL":"","labels":"","legacy":false}])";
    expectMigration();
}

TEST_F(Migration, HappensOnEachStartThatFindsNothing) {
    expectMigration();
    world.files.files.clear();
    world.defaults.strings["runnerName"] = "new";
    EXPECT_EQ(recordsOf(*open()).front().name, "new");
}

TEST_F(Migration, DoesNotHappenWithARecord) {
    hasFile({FakeWorld::record("a")});
    EXPECT_EQ(recordsOf(*open()), std::vector{FakeWorld::record("a")});
}

TEST_F(Migration, SurvivesADiskThatRefuses) {
    world.files.failures[support] = EROFS;
    world.files.failures[listPath] = EROFS;
    EXPECT_EQ(recordsOf(*open()), std::vector{migrated});
    EXPECT_FALSE(world.files.files.contains(listPath));
}

TEST_F(RunnersStoreTest, MigratesTheFallbacksWhenNothingWasSet) {
    world.host.name = "Ada Mac";
    Config::registerDefaults(world.host, world.defaults);
    EXPECT_EQ(recordsOf(*open()),
              (std::vector{RunnerConfig{"legacy", "ada-mac", "", "macos", "", true}}));
}

TEST_F(RunnersStoreTest, MigratesEmptyTextsWhenNothingIsKnown) {
    EXPECT_EQ(recordsOf(*open()),
              (std::vector{RunnerConfig{"legacy", "runner", "", "", "", true}}));
}

TEST_F(RunnersStoreTest, MigratesAnEmptyNameAsRunner) {
    Config::registerDefaults(world.host, world.defaults);
    world.defaults.strings["runnerName"] = "";
    world.defaults.strings["labels"] = "";
    EXPECT_EQ(recordsOf(*open()),
              (std::vector{RunnerConfig{"legacy", "runner", "", "", "", true}}));
}

TEST_F(RunnersStoreTest, MigrationDoesNotLookAtTheDataFolder) {
    world.files.files[support + "/.runner"] = "";
    const auto store = open();
    EXPECT_EQ(store->runners().front()->status(), RunnerStatus::stopped);
    EXPECT_TRUE(store->runners().front()->isRegistered());
}

// Adding.

TEST_F(RunnersStoreTest, AddsAStoppedRunnerAtTheEnd) {
    hasFile({FakeWorld::record("a")});
    const auto store = open();
    const auto added = store->add("  new ");
    EXPECT_EQ(store->runners().back(), added);
    const RunnerConfig expected{added->id(), "  new ", "", "macos", "", false};
    EXPECT_EQ(added->config(), expected);
    EXPECT_EQ(saved(), (std::vector{FakeWorld::record("a"), expected}));
    EXPECT_EQ(saves(), 1U);
    world.queue.runPosted();
    EXPECT_EQ(added->status(), RunnerStatus::stopped);
}

TEST_F(RunnersStoreTest, AddedRunnersHaveIdsOfTheirOwn) {
    const auto store = open();
    const std::string one = store->add("same")->id();
    const std::string two = store->add("same")->id();
    EXPECT_NE(one, two);
    EXPECT_EQ(saved().size(), 3U);
}

TEST_F(RunnersStoreTest, AddingSaysSoBeforeItHappens) {
    const auto store = open();
    std::vector<std::string> seen;
    const Subscription changes = store->onRunnersWillSet([&](const RunnersStore::Runners& coming) {
        seen.push_back(std::to_string(store->runners().size()) + " to " +
                       std::to_string(coming.size()));
    });
    store->add("b");
    store->remove(store->runners().back());
    EXPECT_EQ(seen, (std::vector<std::string>{"1 to 2", "2 to 1"}));
}

// Removing.

TEST_F(RunnersStoreTest, RemovesTheRunnerAndItsFolder) {
    world.markRegistered("a");
    hasFile({FakeWorld::record("a"), FakeWorld::record("b")});
    const auto store = open();
    store->startAllRegistered();
    world.queue.runPosted();
    store->remove(store->runners().front());
    EXPECT_EQ(world.launcher.child(0).terminateRequests(), 1);
    EXPECT_EQ(world.files.treesRemoved, (std::vector<std::string>{FakeWorld::dataFolder("a")}));
    EXPECT_FALSE(world.files.files.contains(FakeWorld::dataFolder("a") + "/.runner"));
    EXPECT_FALSE(world.files.files.contains(FakeWorld::dataFolder("a") + "/valdorn.log"));
    EXPECT_EQ(recordsOf(*store), std::vector{FakeWorld::record("b")});
    EXPECT_EQ(saved(), std::vector{FakeWorld::record("b")});
}

TEST_F(RunnersStoreTest, RemovingALegacyRunnerKeepsItsFolder) {
    world.files.files[support + "/.runner"] = "";
    world.files.files[support + "/valdorn.log"] = "x";
    const auto store = open();
    store->add("b");
    store->remove(store->runners().front());
    EXPECT_TRUE(world.files.treesRemoved.empty());
    EXPECT_TRUE(world.files.files.contains(support + "/.runner"));
    EXPECT_TRUE(world.files.files.contains(support + "/valdorn.log"));
    EXPECT_EQ(saved().size(), 1U);
}

TEST_F(RunnersStoreTest, HandMadeLegacyRecordIsLegacyInEveryRespect) {
    RunnerConfig record = FakeWorld::record("hand");
    record.legacy = true;
    hasFile({record, FakeWorld::record("b")});
    const auto store = open();
    EXPECT_EQ(store->runners().front()->dataDir(), support);
    store->remove(store->runners().front());
    EXPECT_TRUE(world.files.treesRemoved.empty());
}

TEST_F(RunnersStoreTest, IdThatIsNoFolderNameDeletesNothing) {
    for (const std::string& id :
         {std::string(), std::string("."), std::string(".."), std::string("../.."),
          std::string("a/b"), std::string("/"), std::string("a\0b", 3)}) {
        hasFile({FakeWorld::record(id), FakeWorld::record("b")});
        const auto store = open();
        store->remove(store->runners().front());
        EXPECT_TRUE(world.files.treesRemoved.empty()) << id;
        EXPECT_EQ(store->runners().size(), 1U);
    }
}

TEST_F(RunnersStoreTest, RemovesByIdentityNotById) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("a")});
    const auto store = open();
    const auto kept = store->runners().front();
    store->remove(store->runners().back());
    EXPECT_EQ(store->runners(), RunnersStore::Runners{kept});
}

TEST_F(RunnersStoreTest, RemovingAStrangerStopsItAndSaves) {
    hasFile({FakeWorld::record("a")});
    world.markRegistered("x");
    const auto store = open();
    const auto stranger = RunnerManager::create(FakeWorld::record("x"), world.services());
    stranger->start();
    store->remove(stranger);
    EXPECT_EQ(world.launcher.child(0).terminateRequests(), 1);
    EXPECT_EQ(world.files.treesRemoved, (std::vector<std::string>{FakeWorld::dataFolder("x")}));
    EXPECT_EQ(recordsOf(*store), std::vector{FakeWorld::record("a")});
    EXPECT_EQ(saves(), 1U);
}

TEST_F(RunnersStoreTest, RemovingTheLastSavesAnEmptyArray) {
    const auto store = open();
    store->remove(store->runners().front());
    EXPECT_TRUE(store->runners().empty());
    EXPECT_EQ(world.files.files[listPath], "[]");
    EXPECT_EQ(open()->runners().front()->id(), "legacy");
}

TEST_F(RunnersStoreTest, FolderThatCannotBeDeletedIsNoObstacle) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("b")});
    world.files.failures[FakeWorld::dataFolder("a")] = EACCES;
    const auto store = open();
    store->remove(store->runners().front());
    EXPECT_EQ(saved(), std::vector{FakeWorld::record("b")});
}

// Saving.

TEST_F(RunnersStoreTest, EditReachesTheDiskWithTheNextSave) {
    RunnerConfig record = FakeWorld::record("a");
    record.name = "A";
    record.labels = "L";
    hasFile({record});
    const auto store = open();
    const auto runner = store->runners().front();

    record.name = "B";
    runner->setConfig(record);
    EXPECT_EQ(saved().front().name, "A");

    record.labels = "M";
    runner->setConfig(record);
    EXPECT_EQ(saved().front().name, "B");
    EXPECT_EQ(saved().front().labels, "L");

    store->add("other");
    EXPECT_EQ(saved().front().labels, "M");
}

TEST_F(RunnersStoreTest, EachEditIsOneSave) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("b")});
    const auto store = open();
    EXPECT_EQ(saves(), 0U);
    for (std::size_t count = 1; count <= 3; ++count) {
        RunnerConfig record = FakeWorld::record("a");
        record.name = std::to_string(count);
        store->runners().front()->setConfig(record);
        EXPECT_EQ(saves(), count);
    }
}

TEST_F(RunnersStoreTest, EditOfAnAddedRunnerIsSavedToo) {
    const auto store = open();
    const auto added = store->add("new");
    const std::size_t before = saves();
    added->setConfig(FakeWorld::record("x"));
    EXPECT_EQ(saves(), before + 1);
}

TEST_F(RunnersStoreTest, EditOfARemovedRunnerStillSavesTheFleet) {
    const auto store = open();
    const auto removed = store->add("new");
    store->remove(removed);
    const std::size_t before = saves();
    removed->setConfig(FakeWorld::record("x"));
    EXPECT_EQ(saves(), before + 1);
    EXPECT_EQ(saved().size(), 1U);
}

TEST_F(RunnersStoreTest, EditThatCannotBeWrittenLeavesTheListAsItWas) {
    hasFile({FakeWorld::record("a")});
    const auto store = open();
    RunnerConfig edited = store->runners().front()->config();
    edited.name = "\xFF";
    store->runners().front()->setConfig(edited);
    store->add("new");
    EXPECT_EQ(saved(), std::vector{FakeWorld::record("a")});
}

TEST_F(RunnersStoreTest, EditAfterTheStoreIsGoneSavesNothing) {
    auto store = open();
    const auto runner = store->runners().front();
    store.reset();
    const std::size_t before = saves();
    runner->setConfig(FakeWorld::record("x"));
    EXPECT_EQ(saves(), before);
}

TEST_F(RunnersStoreTest, NothingIsSavedWhenRunnersStartAndStop) {
    const auto store = open();
    const std::size_t before = saves();
    store->startAllRegistered();
    store->stopAll();
    world.queue.runPosted();
    EXPECT_EQ(saves(), before);
}

// Every write and folder operation fails once; the list in memory stands and the next save mends
// the file.
TEST(RunnersStoreFaults, EachFailureLeavesTheListAndIsMadeGoodByTheNextSave) {
    for (int failing = 1;; ++failing) {
        FakeWorld world;
        world.files.folders.insert(support);
        FaultyFileSystem files(world.files);
        Services services{world.queue,    world.background, world.launcher, files,
                          world.defaults, world.resources,  world.host};
        files.failOperation(failing, ENOSPC, FaultyFileSystem::Damage::half);
        const auto store = RunnersStore::create(services);
        const auto added = store->add("b");
        store->remove(added);
        EXPECT_EQ(store->runners().size(), 1U);
        if (files.faults() == 0) {
            EXPECT_EQ(failing - 1, 6) << "operations of a start, an add and a removal";
            break;
        }

        store->add("c");
        const auto saved = RunnerRecords::decode(world.files.files[listPath]);
        ASSERT_TRUE(saved);
        EXPECT_EQ(saved->size(), 2U);
    }
}

// Starting and stopping all.

TEST_F(RunnersStoreTest, StartsTheRegisteredAndShowsTheOthers) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("b"), FakeWorld::record("c")});
    world.markRegistered("a");
    world.markRegistered("c");
    const auto store = open();
    store->startAllRegistered();
    EXPECT_EQ(store->runners()[1]->status(), RunnerStatus::stopped);
    ASSERT_EQ(world.launcher.launches.size(), 2U);
    EXPECT_EQ(world.launcher.launches[0].workingFolder, FakeWorld::dataFolder("a"));
    EXPECT_EQ(world.launcher.launches[1].workingFolder, FakeWorld::dataFolder("c"));
    world.queue.runPosted();
    EXPECT_EQ(store->runners()[0]->status(), RunnerStatus::starting);
    EXPECT_EQ(store->runners()[1]->status(), RunnerStatus::notRegistered);
    EXPECT_FALSE(store->runners()[1]->keepRunning());
}

TEST_F(RunnersStoreTest, StopsAllWithoutWaiting) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("b"), FakeWorld::record("c")});
    world.markRegistered("a");
    world.markRegistered("b");
    const auto store = open();
    store->startAllRegistered();
    world.queue.runPosted();
    store->stopAll();
    EXPECT_EQ(world.launcher.child(0).terminateRequests(), 1);
    EXPECT_EQ(world.launcher.child(1).terminateRequests(), 1);
    EXPECT_EQ(store->runners()[0]->status(), RunnerStatus::starting);
    world.queue.runPosted();
    for (const auto& runner : store->runners())
        EXPECT_EQ(runner->status(), RunnerStatus::stopped);
    world.launcher.child(0).end({ChildExit::Kind::exited, 0});
    world.queue.advance(std::chrono::hours(1));
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

// The aggregate status.

class AggregateStatus : public RunnersStoreTest {
protected:
    // A fleet in which one runner has each of the given statuses.
    RunnerStatus of(const std::vector<RunnerStatus>& statuses) {
        world.files.files.clear();
        std::vector<RunnerConfig> records;
        for (std::size_t index = 0; index < statuses.size(); ++index) {
            records.push_back(FakeWorld::record("r" + std::to_string(index)));
            if (statuses[index] != RunnerStatus::notRegistered) {
                world.markRegistered(records.back().id);
            }
        }
        hasFile(records);
        const auto store = open();
        for (std::size_t index = 0; index < statuses.size(); ++index) {
            bring(*store->runners()[index], statuses[index]);
        }
        return store->aggregateStatus();
    }

    void bring(RunnerManager& runner, RunnerStatus status) {
        runner.start();
        world.queue.runPosted();
        if (status == RunnerStatus::stopped)
            runner.stop();
        const char* line = status == RunnerStatus::connected   ? "declare successfully\n"
                           : status == RunnerStatus::noNetwork ? "no route to host\n"
                           : status == RunnerStatus::building  ? "Running job with maxParallel\n"
                                                               : nullptr;
        if (line != nullptr)
            world.launcher.child(world.launcher.childCount() - 1).print(line);
        world.queue.runPosted();
        ASSERT_EQ(runner.status(), status);
    }
};

using Status = RunnerStatus;

TEST_F(AggregateStatus, OfOneRunnerIsItsOwn) {
    for (const Status status : {Status::notRegistered, Status::stopped, Status::starting,
                                Status::noNetwork, Status::connected, Status::building}) {
        EXPECT_EQ(of({status}), status);
    }
}

// For each pair, in both orders, the one that comes first in the precedence wins.
TEST_F(AggregateStatus, FollowsThePrecedence) {
    const std::vector<Status> precedence = {Status::building,  Status::starting,
                                            Status::connected, Status::noNetwork,
                                            Status::stopped,   Status::notRegistered};
    for (std::size_t first = 0; first < precedence.size(); ++first) {
        for (std::size_t second = first; second < precedence.size(); ++second) {
            EXPECT_EQ(of({precedence[first], precedence[second]}), precedence[first]);
            EXPECT_EQ(of({precedence[second], precedence[first]}), precedence[first]);
        }
    }
}

TEST_F(AggregateStatus, DoesNotCountVotes) {
    EXPECT_EQ(of({Status::stopped, Status::stopped, Status::connected, Status::stopped}),
              Status::connected);
}

TEST_F(AggregateStatus, OfAnEmptyFleetIsNotRegistered) {
    const auto store = open();
    store->remove(store->runners().front());
    EXPECT_EQ(store->aggregateStatus(), Status::notRegistered);
}

TEST_F(AggregateStatus, IsReadAfresh) {
    world.markRegistered("a");
    hasFile({FakeWorld::record("a")});
    const auto store = open();
    EXPECT_EQ(store->aggregateStatus(), Status::stopped);
    bring(*store->runners().front(), Status::connected);
    EXPECT_EQ(store->aggregateStatus(), Status::connected);
}

// The log path.

TEST_F(RunnersStoreTest, LogPathIsTheFirstRunnersLog) {
    hasFile({FakeWorld::record("a"), FakeWorld::record("b")});
    const auto store = open();
    EXPECT_EQ(Config::logPath(*store), FakeWorld::dataFolder("a") + "/valdorn.log");
    store->remove(store->runners().front());
    EXPECT_EQ(Config::logPath(*store), FakeWorld::dataFolder("b") + "/valdorn.log");
}

using RunnersStoreDeathTest = RunnersStoreTest;

TEST_F(RunnersStoreDeathTest, LogPathOfAnEmptyFleetEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto store = open();
    store->remove(store->runners().front());
    EXPECT_EXIT(Config::logPath(*store), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace valdorn
