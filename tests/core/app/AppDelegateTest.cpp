#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/AppDelegate.h"
#include "fleet/RunnersStore.h"
#include "support/FakeWorld.h"
#include "support/RecordingStatusItem.h"
#include "support/RecordingWindowHost.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

constexpr char declaredLine[] = "declare successfully\n";
constexpr char jobStartedLine[] = "Running job with maxParallel=1\n";
constexpr char jobFinishedLine[] = "Worker 0 finished (1 tasks executed)\n";

class AppDelegateTest : public testing::Test {
protected:
    // A fleet of registered runners "r0", "r1", ...
    void launchWith(std::size_t count) {
        std::vector<RunnerConfig> records;
        for (std::size_t index = 0; index < count; ++index) {
            records.push_back(FakeWorld::record("r" + std::to_string(index)));
            world.markRegistered(records.back().id);
        }
        launchWith(records);
    }

    void launchWith(const std::vector<RunnerConfig>& records) {
        world.saveFleet(records);
        launch();
    }

    void launch() {
        delegate->applicationDidFinishLaunching();
        world.queue.runPosted();
    }

    void prints(std::size_t child, const std::string& text) {
        world.launcher.child(child).print(text);
        world.queue.runPosted();
    }

    std::string title(const char* id) { return item.menu->item(id).title; }

    void choose(const char* id) {
        item.menu->activate(id);
        world.queue.runPosted();
    }

    const RunnersStore::Runners& runners() { return store->runners(); }

    FakeWorld world;
    Services services = world.services();
    RecordingStatusItem item;
    RecordingWindowHost windows;
    std::shared_ptr<RunnersStore> store;
    int terminations = 0;
    int requestsAtTermination = 0;
    std::shared_ptr<AppDelegate> delegate = AppDelegate::create(
        {services, item, windows,
         [this]() -> RunnersStore& {
             if (!store)
                 store = RunnersStore::create(services);
             return *store;
         },
         [this] {
             ++terminations;
             for (std::size_t index = 0; index < world.launcher.childCount(); ++index) {
                 requestsAtTermination += world.launcher.child(index).terminateRequests();
             }
         },
         [this] { onShowItem(); }});
    std::function<void()> onShowItem = [] {};
};

// Launching.

TEST_F(AppDelegateTest, DoesNothingBeforeItIsLaunched) {
    EXPECT_EQ(item.menu, nullptr);
    EXPECT_EQ(delegate->menu(), nullptr);
    EXPECT_EQ(store, nullptr);
}

TEST_F(AppDelegateTest, RegistersTheDefaultsBeforeTheFleetIsMade) {
    world.host.name = "Ada Mac";
    launch();
    EXPECT_EQ(runners().front()->config().name, "ada-mac");
    EXPECT_EQ(runners().front()->config().labels, "macos");
}

TEST_F(AppDelegateTest, StartsTheFleet) {
    launchWith(2);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(AppDelegateTest, HasTheItemShownOnceWithMenuAndPictureBeforeTheFleetIsStarted) {
    int shown = 0;
    onShowItem = [this, &shown] {
        ++shown;
        EXPECT_NE(item.menu, nullptr);
        EXPECT_NE(delegate->menu(), nullptr);
        EXPECT_NE(item.icon, std::nullopt);
        EXPECT_EQ(world.launcher.launches.size(), 0U);
    };
    launchWith(2);
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(world.launcher.launches.size(), 2U);
}

TEST_F(AppDelegateTest, ItemIsAsWideAsItsIconFromTheStart) {
    item.length = 99;
    launchWith(1);
    EXPECT_EQ(item.length, -1);
}

TEST_F(AppDelegateTest, FirstPictureIsOfTheFirstRunner) {
    world.markRegistered("r1");
    world.saveFleet({FakeWorld::record("r0"), FakeWorld::record("r1")});
    delegate->applicationDidFinishLaunching();
    EXPECT_EQ(title("statusLine"), "Status: Stopped · 2 runners");
    EXPECT_EQ(item.icon, (StatusIcon{"bird", SystemColor::secondary, "Valdorn"}));
}

TEST_F(AppDelegateTest, ShowsOnboardingUntilARunnerHasConnected) {
    launchWith(1);
    ASSERT_EQ(windows.shown.size(), 1U);
    EXPECT_EQ(windows.shown.front().kind, WindowKind::onboarding);
}

TEST_F(AppDelegateTest, ShowsNoOnboardingOnceARunnerHasConnected) {
    world.defaults.booleans["hasConnected"] = true;
    launchWith(1);
    EXPECT_TRUE(windows.shown.empty());
}

// The menu.

TEST_F(AppDelegateTest, MenuKnowsItsItemsByTheirNames) {
    launchWith(1);
    std::vector<std::string> ids;
    for (const MenuItem& one : item.menu->items())
        ids.push_back(one.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"title", "statusLine", "buildLine", "", "startStop",
                                             "restart", "", "openStatus", "showOnboarding",
                                             "openSettings", "openLog", "", "quit"}));
}

TEST_F(AppDelegateTest, MenuHasItsItemsInOrder) {
    launchWith(1);
    struct Row {
        std::string title;
        bool enabled;
        bool hidden;
        bool separator;
        char shortcut;
        bool hasAction;
    };
    const std::vector<Row> expected = {
        {"Valdorn — CI Runner", false, false, false, 0, false},
        {"Status: Starting…", false, false, false, 0, false},
        {"", false, true, false, 0, false},
        {"", true, false, true, 0, false},
        {"Stop Runner", true, false, false, 0, true},
        {"Restart Runner", true, false, false, 0, true},
        {"", true, false, true, 0, false},
        {"Runner Status…", true, false, false, 's', true},
        {"Set Up…", true, false, false, 0, true},
        {"Settings…", true, false, false, ',', true},
        {"Show Log…", true, false, false, 'l', true},
        {"", true, false, true, 0, false},
        {"Quit Valdorn", true, false, false, 'q', true},
    };
    const auto& items = item.menu->items();
    ASSERT_EQ(items.size(), expected.size());
    for (std::size_t index = 0; index < items.size(); ++index) {
        EXPECT_EQ(items[index].title, expected[index].title) << index;
        EXPECT_EQ(items[index].enabled, expected[index].enabled) << index;
        EXPECT_EQ(items[index].hidden, expected[index].hidden) << index;
        EXPECT_EQ(items[index].separator, expected[index].separator) << index;
        EXPECT_EQ(items[index].shortcut, expected[index].shortcut) << index;
        EXPECT_EQ(static_cast<bool>(items[index].action), expected[index].hasAction) << index;
    }
    EXPECT_EQ(delegate->menu(), item.menu);
}

TEST_F(AppDelegateTest, OneRunnersTextsSpeakOfTheRunner) {
    launchWith(1);
    EXPECT_EQ(title("startStop"), "Stop Runner");
    EXPECT_EQ(title("restart"), "Restart Runner");
    prints(0, "task 1 repo is acme/site u\n");
    EXPECT_EQ(title("buildLine"), "Building: acme/site");
    EXPECT_FALSE(item.menu->item("buildLine").hidden);
    choose("startStop");
    EXPECT_EQ(title("startStop"), "Start Runner");
    EXPECT_EQ(title("statusLine"), "Status: Stopped");
}

TEST_F(AppDelegateTest, SeveralRunnersTextsSpeakOfAll) {
    launchWith(3);
    EXPECT_EQ(title("statusLine"), "Status: Starting… · 3 runners");
    EXPECT_EQ(title("startStop"), "Stop All");
    EXPECT_EQ(title("restart"), "Restart All");
    choose("startStop");
    EXPECT_EQ(title("startStop"), "Start All");
}

TEST_F(AppDelegateTest, BuildingShowsTheSpinner) {
    launchWith(2);
    prints(0, declaredLine);
    prints(1, std::string("task 1 repo is acme/site u\n") + jobStartedLine);
    EXPECT_EQ(title("statusLine"), "Status: Building a job · 2 runners");
    EXPECT_EQ(title("buildLine"), "Building: name of r1 — acme/site");
    EXPECT_EQ(item.icon, std::nullopt);
    EXPECT_TRUE(item.spinning);
    EXPECT_EQ(item.length, 24);
}

TEST_F(AppDelegateTest, FinishedBuildBringsTheIconBack) {
    launchWith(1);
    prints(0, std::string("task 1 repo is acme/site u\n") + jobStartedLine);
    prints(0, jobFinishedLine);
    world.queue.advance(4s);
    EXPECT_FALSE(item.spinning);
    EXPECT_EQ(item.length, StatusItem::variableLength);
    EXPECT_EQ(item.icon, (StatusIcon{"bird.fill", SystemColor::green, "Valdorn"}));
    EXPECT_TRUE(item.menu->item("buildLine").hidden);
    EXPECT_EQ(title("buildLine"), "Building: acme/site");
}

TEST_F(AppDelegateTest, WidthIsGivenBackOnlyByASpinnerThatTookIt) {
    launchWith(1);
    item.length = 99;
    prints(0, declaredLine);
    EXPECT_EQ(item.length, 99);
}

TEST_F(AppDelegateTest, BuildLineNamesTheFirstRunnerThatBuilds) {
    launchWith(3);
    prints(2, "x repo is c/c\n");
    prints(1, "x repo is b/b\n");
    EXPECT_EQ(title("buildLine"), "Building: name of r1 — b/b");
}

TEST_F(AppDelegateTest, IconFollowsTheStatus) {
    world.defaults.booleans["hasConnected"] = true;
    launchWith(1);
    EXPECT_EQ(item.icon, (StatusIcon{"bird", SystemColor::yellow, "Valdorn"}));
    prints(0, declaredLine);
    EXPECT_EQ(item.icon, (StatusIcon{"bird.fill", SystemColor::green, "Valdorn"}));
    prints(0, "no route to host\n");
    EXPECT_EQ(item.icon, (StatusIcon{"bird", SystemColor::red, "Valdorn"}));
    choose("startStop");
    EXPECT_EQ(item.icon, (StatusIcon{"bird", SystemColor::secondary, "Valdorn"}));
}

TEST_F(AppDelegateTest, UnregisteredFleetIsGrey) {
    launch();
    EXPECT_EQ(title("statusLine"), "Status: Not registered");
    EXPECT_EQ(title("startStop"), "Start Runner");
    EXPECT_EQ(item.icon, (StatusIcon{"bird", SystemColor::secondary, "Valdorn"}));
}

TEST_F(AppDelegateTest, RepeatedLinesChangeNothingInTheBar) {
    launchWith(1);
    prints(0, declaredLine);
    const int iconChanges = item.iconChanges;
    int menuChanges = 0;
    const Subscription changes = item.menu->onDidChange([&](const MenuItem&) { ++menuChanges; });
    prints(0, std::string(declaredLine) + declaredLine + "[a/b] x\n");
    EXPECT_EQ(item.iconChanges, iconChanges);
    EXPECT_EQ(menuChanges, 0);
}

TEST_F(AppDelegateTest, ArmsNothingWhenIdle) {
    launchWith(2);
    prints(0, declaredLine);
    prints(1, declaredLine);
    EXPECT_EQ(world.queue.pending(), 0U);
}

TEST_F(AppDelegateTest, FollowsRunnersThatAreAdded) {
    launchWith(1);
    const auto added = store->add("new");
    world.queue.runPosted();
    EXPECT_EQ(title("statusLine"), "Status: Starting… · 2 runners");
    EXPECT_EQ(title("restart"), "Restart All");
    world.markRegistered(added->id());
    added->start();
    world.queue.runPosted();
    prints(1, "x repo is c/c\n");
    EXPECT_EQ(title("buildLine"), "Building: new — c/c");
}

TEST_F(AppDelegateTest, ForgetsRunnersThatAreRemoved) {
    launchWith(2);
    prints(1, "x repo is c/c\n");
    store->remove(runners().back());
    world.queue.runPosted();
    EXPECT_EQ(title("statusLine"), "Status: Starting…");
    EXPECT_EQ(title("restart"), "Restart Runner");
    EXPECT_TRUE(item.menu->item("buildLine").hidden);
}

TEST_F(AppDelegateTest, RunnerThatIsRemovedIsNotListenedTo) {
    launchWith(2);
    const auto removed = runners().back();
    store->remove(removed);
    world.queue.runPosted();
    removed->setConfig(FakeWorld::record("x"));
    // One change of a runner that is followed posts one refresh.
    EXPECT_EQ(world.queue.pending(), 0U);
    runners().front()->setConfig(FakeWorld::record("y"));
    EXPECT_EQ(world.queue.pending(), 1U);
}

TEST_F(AppDelegateTest, ManyChangesInOneTurnAreOneRefresh) {
    launchWith(2);
    for (int count = 0; count < 10; ++count) {
        for (const auto& runner : runners())
            runner->setConfig(runner->config());
    }
    EXPECT_EQ(world.queue.pending(), 1U);
    world.queue.runPosted();
    runners().front()->setConfig(runners().front()->config());
    EXPECT_EQ(world.queue.pending(), 1U);
}

TEST_F(AppDelegateTest, RenamedRunnerIsRenamedInTheBuildLine) {
    launchWith(2);
    prints(0, "x repo is c/c\n");
    RunnerConfig record = runners().front()->config();
    record.name = "better";
    runners().front()->setConfig(record);
    world.queue.runPosted();
    EXPECT_EQ(title("buildLine"), "Building: better — c/c");
}

TEST_F(AppDelegateTest, ChildThatEndedIsNotShownAsRunning) {
    launchWith(1);
    world.launcher.child(0).end({ChildExit::Kind::exited, 1});
    world.queue.advance(4s);
    runners().front()->setConfig(runners().front()->config());  // any change redraws
    world.queue.runPosted();
    EXPECT_EQ(title("startStop"), "Start Runner");
}

// Having connected.

TEST_F(AppDelegateTest, ConnectingIsRemembered) {
    launchWith(1);
    EXPECT_FALSE(world.defaults.boolean("hasConnected"));
    prints(0, declaredLine);
    EXPECT_TRUE(world.defaults.boolean("hasConnected"));
    EXPECT_EQ(world.defaults.writes, 1);
}

TEST_F(AppDelegateTest, BuildingIsRememberedToo) {
    launchWith(1);
    prints(0, jobStartedLine);
    EXPECT_TRUE(world.defaults.boolean("hasConnected"));
}

TEST_F(AppDelegateTest, LostNetworkBringsOnboardingBeforeTheFirstConnection) {
    launchWith(1);
    windows.shown.clear();
    prints(0, "no route to host\n");
    ASSERT_EQ(windows.shown.size(), 1U);
    EXPECT_EQ(windows.shown.front().kind, WindowKind::onboarding);
}

TEST_F(AppDelegateTest, LostNetworkBringsNothingAfterTheFirstConnection) {
    launchWith(1);
    prints(0, declaredLine);
    windows.shown.clear();
    prints(0, "no route to host\n");
    EXPECT_TRUE(windows.shown.empty());
    EXPECT_TRUE(world.defaults.boolean("hasConnected"));
}

// Actions.

TEST_F(AppDelegateTest, ToggleStopsAllWhenAnyChildRuns) {
    launchWith(3);
    for (const std::size_t child : {0U, 2U}) {
        runners()[child]->stop();
        world.launcher.child(child).end({ChildExit::Kind::exited, 0});
    }
    world.queue.runPosted();
    choose("startStop");
    EXPECT_EQ(world.launcher.child(1).terminateRequests(), 1);
    EXPECT_EQ(world.launcher.launches.size(), 3U);
    for (const auto& runner : runners())
        EXPECT_FALSE(runner->keepRunning());
}

TEST_F(AppDelegateTest, ToggleStartsAllWhenNoneRuns) {
    launchWith(2);
    choose("startStop");
    choose("startStop");
    EXPECT_EQ(world.launcher.launches.size(), 4U);
}

TEST_F(AppDelegateTest, RestartEndsWhatRunsAndStartsTheRest) {
    std::vector<RunnerConfig> records;
    for (const char* id : {"running", "stopped", "unregistered"}) {
        records.push_back(FakeWorld::record(id));
    }
    world.markRegistered("running");
    world.markRegistered("stopped");
    launchWith(records);
    runners()[1]->stop();
    world.launcher.child(1).end({ChildExit::Kind::exited, 0});
    world.queue.runPosted();

    choose("restart");
    EXPECT_EQ(world.launcher.child(0).terminateRequests(), 1);
    ASSERT_EQ(world.launcher.launches.size(), 3U);
    EXPECT_EQ(world.launcher.launches[2].workingFolder, FakeWorld::dataFolder("stopped"));
    EXPECT_EQ(runners()[2]->status(), RunnerStatus::notRegistered);
}

TEST_F(AppDelegateTest, RestartOfAnEmptyFleetDoesNothing) {
    launchWith(1);
    store->remove(runners().front());
    world.queue.runPosted();
    choose("restart");
    EXPECT_EQ(world.launcher.launches.size(), 1U);
}

TEST_F(AppDelegateTest, QuitStopsEveryRunnerBeforeItTerminates) {
    launchWith(2);
    item.menu->activate("quit");
    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(requestsAtTermination, 2);
    EXPECT_EQ(world.launcher.child(0).terminateRequests(), 1);
    EXPECT_EQ(world.launcher.child(1).terminateRequests(), 1);
}

TEST_F(AppDelegateTest, QuitBeforeTheLaunchMakesNoFleet) {
    delegate->quit();
    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(store, nullptr);
    EXPECT_TRUE(world.files.files.empty());
}

TEST_F(AppDelegateTest, MenuOpensTheWindows) {
    world.defaults.booleans["hasConnected"] = true;
    launchWith(1);
    for (const char* id : {"openSettings", "openLog", "openStatus", "showOnboarding"})
        choose(id);
    struct Row {
        WindowKind kind;
        const char* title;
        int width;
        int height;
        bool resizable;
    };
    const std::vector<Row> expected = {
        {WindowKind::settings, "Valdorn", 480, 340, false},
        {WindowKind::log, "Valdorn — Log", 720, 460, true},
        {WindowKind::status, "Valdorn — Runner Status", 480, 260, true},
        {WindowKind::onboarding, "Valdorn", 460, 300, false},
    };
    ASSERT_EQ(windows.shown.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        const WindowDescription& shown = windows.shown[index];
        EXPECT_EQ(shown.kind, expected[index].kind);
        EXPECT_EQ(shown.title, expected[index].title);
        EXPECT_EQ(shown.contentWidthPoints, expected[index].width);
        EXPECT_EQ(shown.contentHeightPoints, expected[index].height);
        EXPECT_EQ(shown.resizable, expected[index].resizable);
    }
}

TEST_F(AppDelegateTest, NothingThatItSubscribedToKeepsItAlive) {
    launchWith(1);
    const std::weak_ptr<AppDelegate> weak = delegate;
    world.launcher.child(0).print(declaredLine);
    delegate.reset();
    EXPECT_TRUE(weak.expired());
    world.queue.runPosted();
}

TEST_F(AppDelegateTest, IsGoneBeforeItsFirstLookAtTheFleet) {
    world.markRegistered("r0");
    world.saveFleet({FakeWorld::record("r0")});
    delegate->applicationDidFinishLaunching();
    const int changes = item.iconChanges;
    delegate.reset();
    world.queue.runPosted();
    store->add("new");
    prints(0, declaredLine);
    EXPECT_EQ(store->aggregateStatus(), RunnerStatus::connected);
    EXPECT_EQ(item.iconChanges, changes);
    EXPECT_EQ(world.queue.pending(), 0U);
}

TEST_F(AppDelegateTest, EntryOfItsMenuThatIsChosenTooLateDoesNothing) {
    launchWith(1);
    const auto quit = item.menu->item("quit").action;
    delegate.reset();
    quit();
    EXPECT_EQ(terminations, 0);
}

using AppDelegateDeathTest = AppDelegateTest;

TEST_F(AppDelegateDeathTest, LaunchingWithAnEmptyFleetEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    store = RunnersStore::create(services);
    store->remove(store->runners().front());
    EXPECT_EXIT(delegate->applicationDidFinishLaunching(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace valdorn
