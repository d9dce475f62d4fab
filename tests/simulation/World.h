#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "app/LaunchGate.h"
#include "app/TrayHostSearch.h"
#include "fleet/RunnerSelection.h"
#include "fleet/RunnersStore.h"
#include "logs/LogTailer.h"
#include "logs/LogViewer.h"
#include "runner/RegistrationForm.h"
#include "simulation/FaultyDisk.h"
#include "simulation/Model.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"
#include "support/ManualBackgroundQueue.h"
#include "support/MemoryChildLauncher.h"
#include "support/MemoryLoginItemRegistry.h"
#include "support/MemoryUserDefaults.h"
#include "support/RecordingStatusItem.h"
#include "support/RecordingSystemLog.h"
#include "support/RecordingWindowHost.h"
#include "support/ScriptedHttpClient.h"
#include "support/VirtualMainQueue.h"
#include "update/UpdateChecker.h"

namespace valdorn::simulation {

// The time as the model counts it.
Millis millisOf(MainQueue::TimePoint time);

// Notes when each launch was asked for.
class TimedLauncher : public MemoryChildLauncher {
public:
    explicit TimedLauncher(const MainQueue& queue) : queue_(queue) {}

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override {
        times.push_back(millisOf(queue_.now()));
        return MemoryChildLauncher::launch(command, std::move(handlers));
    }

    std::vector<Millis> times;  // beside `launches`

private:
    const MainQueue& queue_;
};

// The computer: what outlives a run of the program.
struct Machine {
    explicit Machine(const DiskFaults& faults) : disk(files, faults) {}

    MemoryFileSystem files;
    FaultyDisk disk;
    MemoryUserDefaults defaults;
    FixedBundleResources resources;
    FixedHostInfo host;
    MemoryLoginItemRegistry loginItems;
    RecordingSystemLog systemLog;
};

// One run of the program: the real core, wired as it is in the product but for what needs a display.
class Program {
public:
    // Launches. The machine outlives this.
    explicit Program(Machine& machine);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    VirtualMainQueue queue;
    ManualBackgroundQueue background;
    TimedLauncher launcher{queue};
    ScriptedHttpClient http{queue};
    RecordingStatusItem statusItem;
    RecordingWindowHost windows;
    int terminations = 0;
    std::vector<std::size_t> launchesWhenShown;  // each time the item was to be shown

    std::shared_ptr<RunnersStore> store;
    std::shared_ptr<AppDelegate> delegate;
    std::unique_ptr<RunnerSelection> selection;
    std::array<std::shared_ptr<RegistrationForm>, formCount> forms;
    std::shared_ptr<LogTailer> tailer;
    std::unique_ptr<LogViewer> viewer;
    std::unique_ptr<UpdateChecker> updates;

    bool notifierHost = false;
    bool xembedHost = false;
    std::vector<std::string> trayTold;
    std::vector<std::string> gateDone;
    std::unique_ptr<TrayHostSearch> search;
    std::unique_ptr<LaunchGate> gate;

    Announcements announcements;
    int scrolls = 0;

    // Every runner ever made, by number.
    const std::vector<std::weak_ptr<RunnerManager>>& everMade() const { return everMade_; }

    // The log window is there for the first time.
    void makeViewer();
    // A window of its own for what the release service says.
    void makeUpdates();

private:
    void makeStore();
    void makeTray();
    void makeForms();
    void watchList();
    void watchNew(const RunnersStore::Runners& runners);
    void watch(const std::shared_ptr<RunnerManager>& runner);
    std::size_t numberOf(const std::shared_ptr<RunnerManager>& runner) const;
    std::vector<std::size_t> numbersOf(const RunnersStore::Runners& runners) const;

    Machine& machine_;
    Services services_;
    std::vector<std::weak_ptr<RunnerManager>> everMade_;
    std::vector<Subscription> subscriptions_;
    Subscription scrolling_;
    Subscription tailing_;
    Subscription updating_;
};

// What they publish.
RunnerView viewOf(const RunnerManager& runner, std::size_t number);
FormView viewOf(const RegistrationForm& form, std::size_t number);
LogView viewOf(const LogLines& lines);

}  // namespace valdorn::simulation
