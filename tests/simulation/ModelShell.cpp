#include "simulation/ModelShell.h"

#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

enum Entry : std::size_t { statusEntry = 1, buildEntry = 2, startStopEntry = 4, restartEntry = 5 };

std::string titleOf(RunnerStatus status) {
    switch (status) {
        case RunnerStatus::notRegistered:
            return "Not registered";
        case RunnerStatus::stopped:
            return "Stopped";
        case RunnerStatus::starting:
            return "Starting…";
        case RunnerStatus::noNetwork:
            return "No local-network access";
        case RunnerStatus::connected:
            return "Connected — idle";
        case RunnerStatus::building:
            return "Building a job";
    }
    return {};
}

MenuLine text(const char* title, bool isHidden = false) {
    return {title, isHidden, false, false, 0};
}

MenuLine action(const char* title, char shortcut = 0) {
    return {title, false, true, false, shortcut};
}

MenuLine separator() {
    return {"", false, true, true, 0};
}

WindowView windowOf(WindowKind kind) {
    switch (kind) {
        case WindowKind::settings:
            return {kind, "Valdorn", 480, 340, false};
        case WindowKind::log:
            return {kind, "Valdorn — Log", 720, 460, true};
        case WindowKind::status:
            return {kind, "Valdorn — Runner Status", 480, 260, true};
        case WindowKind::onboarding:
            return {kind, "Valdorn", 460, 300, false};
    }
    return {};
}

std::vector<MenuLine> freshMenu() {
    return {text("Valdorn — CI Runner"),
            text("Status: —"),
            text("", true),
            separator(),
            action("Start Runner"),
            action("Restart Runner"),
            separator(),
            action("Runner Status…", 's'),
            action("Set Up…"),
            action("Settings…", ','),
            action("Show Log…", 'l'),
            separator(),
            action("Quit Valdorn", 'q')};
}

}  // namespace

void ModelShell::launch(const std::function<ModelFleet&()>& makeFleet) {
    menu = freshMenu();
    fleet_ = &makeFleet();
    render(fleet_->runners().front()->view().status);
    subscribe();
    fleet_->startAll();
    if (!defaults_.hasConnected)
        show(WindowKind::onboarding);
}

void ModelShell::subscribe() {
    const auto lookLater = [this] { loop_.post([this] { observeRunners(); }); };
    fleet_->listWillChange = lookLater;
    fleet_->runnerWillChange = [this](const ModelRunner& runner) { runnerWillChange(runner); };
    lookLater();
}

void ModelShell::observeRunners() {
    observed_.clear();
    for (const auto& runner : fleet_->runners())
        observed_.insert(runner->view().number);
    refresh();
}

void ModelShell::runnerWillChange(const ModelRunner& runner) {
    if (isRefreshDue_ || !observed_.contains(runner.view().number))
        return;
    isRefreshDue_ = true;
    loop_.post([this] {
        isRefreshDue_ = false;
        refresh();
    });
}

void ModelShell::refresh() {
    const RunnerStatus status = fleet_->aggregate();
    render(status);
    if (status == RunnerStatus::connected || status == RunnerStatus::building) {
        if (!defaults_.hasConnected)
            reached<"connected for the first time">();
        defaults_.hasConnected = true;
    } else if (status == RunnerStatus::noNetwork && !defaults_.hasConnected) {
        reached<"onboarding because of the network">();
        show(WindowKind::onboarding);
    }
}

void ModelShell::render(RunnerStatus status) {
    const std::size_t count = fleet_->runners().size();
    const std::string suffix = count >= 2 ? " All" : " Runner";
    menu[statusEntry].title = "Status: " + titleOf(status);
    if (count >= 2)
        menu[statusEntry].title += " · " + std::to_string(count) + " runners";
    menu[startStopEntry].title = (fleet_->isAnyRunning() ? "Stop" : "Start") + suffix;
    menu[restartEntry].title = "Restart" + suffix;
    renderBuildLine();
    renderIcon(status);
}

void ModelShell::renderBuildLine() {
    menu[buildEntry].isHidden = true;
    const auto& runners = fleet_->runners();
    for (std::size_t index = 0; index < runners.size(); ++index) {
        const RunnerView& view = runners[index]->view();
        if (!view.build)
            continue;
        if (index > 0)
            reached<"build line of a later runner">();
        const std::string name = runners.size() >= 2 ? view.config.name + " — " : "";
        menu[buildEntry].title = "Building: " + name + *view.build;
        menu[buildEntry].isHidden = false;
        return;
    }
}

void ModelShell::renderIcon(RunnerStatus status) {
    if (status == RunnerStatus::building) {
        icon = {std::nullopt, SystemColor::secondary, true, 24};
        return;
    }
    if (icon.isSpinning)
        reached<"spinner taken out">();
    icon = {"bird", SystemColor::secondary, false, -1};
    if (status == RunnerStatus::starting)
        icon.color = SystemColor::yellow;
    if (status == RunnerStatus::noNetwork)
        icon.color = SystemColor::red;
    if (status == RunnerStatus::connected)
        icon = {"bird.fill", SystemColor::green, false, -1};
}

void ModelShell::toggle() {
    if (fleet_->isAnyRunning())
        fleet_->stopAll();
    else
        fleet_->startAll();
}

void ModelShell::restart() {
    for (const auto& runner : ModelFleet::Runners(fleet_->runners()))
        runner->restart();
}

void ModelShell::quit() {
    if (fleet_)
        fleet_->stopAll();
    ++terminations;
}

void ModelShell::show(WindowKind kind) {
    shown.push_back(windowOf(kind));
    open.insert(kind);
}

}  // namespace valdorn::simulation
