#include "simulation/World.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "fleet/LogPath.h"

namespace valdorn::simulation {

Millis millisOf(MainQueue::TimePoint time) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

RunnerView viewOf(const RunnerManager& runner, std::size_t number) {
    RunnerView view{number,
                    runner.config(),
                    runner.status(),
                    runner.currentBuild(),
                    runner.currentJob(),
                    runner.runnerVersion(),
                    std::nullopt};
    if (runner.startedAt())
        view.startedAt = millisOf(*runner.startedAt());
    return view;
}

Program::Program(Machine& machine)
    : machine_(machine), services_{queue,        background,       launcher,
                                   machine.disk, machine.defaults, machine.resources,
                                   machine.host} {
    const auto sharedStore = [this]() -> RunnersStore& {
        if (!store)
            makeStore();
        return *store;
    };
    delegate = AppDelegate::create(
        {services_, statusItem, windows, sharedStore, [this] { ++terminations; },
         [this] { launchesWhenShown.push_back(launcher.launches.size()); }});
    delegate->applicationDidFinishLaunching();
    selection = std::make_unique<RunnerSelection>(store);
    for (auto& form : forms)
        form = RegistrationForm::create(queue, background);
    makeUpdates();
    makeTray();
}

Program::~Program() {
    delegate.reset();  // before the fleet, which it looks at
}

void Program::makeStore() {
    store = RunnersStore::create(services_);
    watchRunners();
}

void Program::makeTray() {
    search = std::make_unique<TrayHostSearch>(
        queue,
        TrayHostSearch::Probes{[this] { return notifierHost; }, [this] { return xembedHost; }},
        TrayHostSearch::Callbacks{[this](TrayHost host) {
                                      trayTold.emplace_back(host == TrayHost::notifier ? "notifier"
                                                                                       : "xembed");
                                  },
                                  [this] { trayTold.emplace_back("missing"); },
                                  [this] { trayTold.emplace_back("appeared"); }});
    gate = std::make_unique<LaunchGate>(queue, [this] { gateDone.emplace_back("launch"); });
}

void Program::makeUpdates() {
    updates.reset();
    updates = std::make_unique<UpdateChecker>(http, "https://gitea.test");
}

void Program::makeViewer() {
    tailer = LogTailer::create(queue, machine_.disk, Config::logPath(*store));
    viewer = std::make_unique<LogViewer>(queue, tailer, CaseFold("C"));
    scrolling_ = viewer->onFilteredChanged([this](LogViewer::Scrolling scrolling) {
        scrolls += scrolling == LogViewer::Scrolling::toLast ? 1 : 0;
    });
}

void Program::watchRunners() {
    for (const auto& runner : store->runners()) {
        const bool isKnown = std::any_of(everMade_.begin(), everMade_.end(),
                                         [&](const auto& known) { return known.lock() == runner; });
        if (!isKnown)
            watch(runner);
    }
}

void Program::watch(const std::shared_ptr<RunnerManager>& runner) {
    const std::size_t number = everMade_.size();
    everMade_.push_back(runner);
    subscriptions_.push_back(runner->onWillChange(
        [this, number, self = runner.get()] { announcements.push_back(viewOf(*self, number)); }));
}

}  // namespace valdorn::simulation
