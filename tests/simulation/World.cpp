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

FormView viewOf(const RegistrationForm& form, std::size_t number) {
    return {number, form.token(), form.busy(), form.message(), form.ok()};
}

LogView viewOf(const LogLines& lines) {
    return {lines.size(), lines.empty() ? std::string() : std::string(*lines.back())};
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
    subscriptions_.push_back(selection->onWillChange(
        [this] { announcements.push_back(SelectionView{selection->selectedID()}); }));
    makeForms();
    makeUpdates();
    makeTray();
}

Program::~Program() {
    delegate.reset();  // before the fleet, which it looks at
}

void Program::makeStore() {
    store = RunnersStore::create(services_);
    watchNew(store->runners());
    watchList();
}

void Program::watchList() {
    subscriptions_.push_back(store->onWillChange([this] {
        announcements.push_back(ListView{numbersOf(store->runners()), std::nullopt});
    }));
    subscriptions_.push_back(store->onRunnersWillSet([this](const RunnersStore::Runners& coming) {
        const auto before = numbersOf(store->runners());
        watchNew(coming);
        announcements.push_back(ListView{before, numbersOf(coming)});
    }));
}

void Program::makeForms() {
    for (std::size_t number = 0; number < formCount; ++number) {
        forms[number] = RegistrationForm::create(queue, background);
        subscriptions_.push_back(
            forms[number]->onWillChange([this, number, form = forms[number].get()] {
                announcements.push_back(viewOf(*form, number));
            }));
    }
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
    updating_ =
        updates->onWillChange([this] { announcements.push_back(ReleaseView{updates->latest()}); });
}

void Program::makeViewer() {
    tailer = LogTailer::create(queue, machine_.disk, Config::logPath(*store));
    tailing_ = tailer->onWillChange([this] { announcements.push_back(viewOf(tailer->lines())); });
    viewer = std::make_unique<LogViewer>(queue, tailer, CaseFold("C"));
    scrolling_ = viewer->onFilteredChanged([this](LogViewer::Scrolling scrolling) {
        scrolls += scrolling == LogViewer::Scrolling::toLast ? 1 : 0;
    });
}

std::size_t Program::numberOf(const std::shared_ptr<RunnerManager>& runner) const {
    const auto known = std::find_if(everMade_.begin(), everMade_.end(),
                                    [&](const auto& one) { return one.lock() == runner; });
    return static_cast<std::size_t>(known - everMade_.begin());
}

std::vector<std::size_t> Program::numbersOf(const RunnersStore::Runners& runners) const {
    std::vector<std::size_t> numbers;
    for (const auto& runner : runners)
        numbers.push_back(numberOf(runner));
    return numbers;
}

void Program::watchNew(const RunnersStore::Runners& runners) {
    for (const auto& runner : runners) {
        if (numberOf(runner) == everMade_.size())
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
