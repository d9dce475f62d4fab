#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fleet/RunnerSelection.h"
#include "support/FakeWorld.h"

namespace valdorn {
namespace {

class RunnerSelectionTest : public testing::Test {
protected:
    // A fleet of runners with these ids.
    void makeFleet(const std::vector<std::string>& ids) {
        std::vector<RunnerConfig> records;
        for (const std::string& id : ids)
            records.push_back(FakeWorld::record(id));
        world.saveFleet(records);
        store = RunnersStore::create(world.services());
        selection = std::make_unique<RunnerSelection>(store);
    }
    std::vector<std::string> ids() const {
        std::vector<std::string> ids;
        for (const auto& runner : store->runners())
            ids.push_back(runner->id());
        return ids;
    }

    FakeWorld world;
    std::shared_ptr<RunnersStore> store;
    std::unique_ptr<RunnerSelection> selection;
};

TEST_F(RunnerSelectionTest, BeginsWithTheFirstRunner) {
    makeFleet({"a", "b"});
    EXPECT_EQ(selection->selectedID(), "a");
    EXPECT_EQ(selection->selected(), store->runners()[0]);
}

TEST_F(RunnerSelectionTest, SelectsByTheId) {
    makeFleet({"a", "b", "c"});
    selection->select("c");
    EXPECT_EQ(selection->selectedID(), "c");
    EXPECT_EQ(selection->selected(), store->runners()[2]);
}

TEST_F(RunnerSelectionTest, OfTwoRunnersWithOneIdTheFirstIsMeant) {
    makeFleet({"a", "b", "b"});
    selection->select("b");
    EXPECT_EQ(selection->selected(), store->runners()[1]);
}

TEST_F(RunnerSelectionTest, WithoutASelectionTheFirstRunnerIsMeant) {
    makeFleet({"a", "b"});
    selection->select("b");
    selection->select(std::nullopt);
    EXPECT_EQ(selection->selectedID(), std::nullopt);
    EXPECT_EQ(selection->selected(), store->runners()[0]);
}

TEST_F(RunnerSelectionTest, AnIdThatNoRunnerHasMeansTheFirst) {
    makeFleet({"a", "b"});
    selection->select("b");
    store->remove(store->runners()[1]);
    EXPECT_EQ(selection->selectedID(), "b");
    EXPECT_EQ(selection->selected(), store->runners()[0]);
}

TEST_F(RunnerSelectionTest, AddsARunnerAndSelectsIt) {
    makeFleet({"a"});
    selection->add();
    ASSERT_EQ(store->runners().size(), 2U);
    const RunnerManager& added = *store->runners()[1];
    EXPECT_EQ(added.config().name, "new-runner");
    EXPECT_EQ(selection->selectedID(), added.id());
    world.queue.runPosted();
    EXPECT_EQ(world.launcher.childCount(), 0U);
}

TEST_F(RunnerSelectionTest, RunnersAddedHaveOneNameAndTheirOwnIds) {
    makeFleet({"a"});
    selection->add();
    selection->add();
    ASSERT_EQ(store->runners().size(), 3U);
    EXPECT_EQ(store->runners()[1]->config().name, store->runners()[2]->config().name);
    EXPECT_NE(store->runners()[1]->id(), store->runners()[2]->id());
    EXPECT_EQ(selection->selectedID(), store->runners()[2]->id());
}

TEST_F(RunnerSelectionTest, TheLastRunnerCannotBeRemoved) {
    makeFleet({"a"});
    EXPECT_FALSE(selection->canRemove());
    selection->add();
    EXPECT_TRUE(selection->canRemove());
}

TEST_F(RunnerSelectionTest, RemovesTheSelectedRunnerAndSelectsTheFirst) {
    makeFleet({"a", "b", "c"});
    selection->select("c");
    selection->removeSelected();
    EXPECT_EQ(ids(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(selection->selectedID(), "a");
}

TEST_F(RunnerSelectionTest, RemovesTheFirstRunnerWhereNoneIsHighlighted) {
    makeFleet({"a", "b", "c"});
    selection->select(std::nullopt);
    selection->removeSelected();
    EXPECT_EQ(ids(), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(selection->selectedID(), "b");
}

TEST_F(RunnerSelectionTest, ASecondClickKeepsTheLastRunner) {
    makeFleet({"a", "b"});
    selection->removeSelected();
    selection->removeSelected();
    EXPECT_EQ(ids(), (std::vector<std::string>{"b"}));
}

TEST_F(RunnerSelectionTest, TellsBeforeTheSelectionChangesAndOnlyThen) {
    makeFleet({"a", "b"});
    std::vector<std::optional<std::string>> seen;
    const Subscription subscription = selection->onWillChange(
        [&]() VALDORN_ON_MAIN_THREAD { seen.push_back(selection->selectedID()); });
    selection->select("a");
    EXPECT_TRUE(seen.empty());
    selection->select("b");
    EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{"a"}));
}

}  // namespace
}  // namespace valdorn
