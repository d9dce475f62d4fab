#include "app/StatusMenu.h"

#include <string>
#include <utility>
#include <vector>

#include "fleet/RunnersStore.h"
#include "platform/StatusItem.h"

namespace valdorn {

namespace {

// Wider than the spinner, and fixed, so that the bar does not jump while it turns.
constexpr int spinnerLengthPoints = 24;

MenuItem separator() {
    MenuItem item;
    item.separator = true;
    return item;
}

MenuItem label(std::string id, std::string title) {
    MenuItem item;
    item.id = std::move(id);
    item.title = std::move(title);
    item.enabled = false;
    return item;
}

MenuItem command(std::string id, std::string title, std::function<void()> action,
                 char shortcut = 0) {
    MenuItem item;
    item.id = std::move(id);
    item.title = std::move(title);
    item.action = std::move(action);
    item.shortcut = shortcut;
    return item;
}

std::vector<MenuItem> menuItems(StatusMenuActions actions) {
    MenuItem buildLine = label("buildLine", "");
    buildLine.hidden = true;
    return {
        label("title", "Valdorn — CI Runner"),
        label("statusLine", "Status: —"),
        std::move(buildLine),
        separator(),
        command("startStop", "Start Runner", std::move(actions.toggleRunner)),
        command("restart", "Restart Runner", std::move(actions.restartRunner)),
        separator(),
        command("openStatus", "Runner Status…", std::move(actions.openStatus), 's'),
        command("showOnboarding", "Set Up…", std::move(actions.showOnboarding)),
        command("openSettings", "Settings…", std::move(actions.openSettings), ','),
        command("openLog", "Show Log…", std::move(actions.openLog), 'l'),
        separator(),
        command("quit", "Quit Valdorn", std::move(actions.quit), 'q'),
    };
}

StatusIcon statusIcon(RunnerStatus status) {
    constexpr char outline[] = "bird";
    constexpr char filled[] = "bird.fill";
    constexpr char description[] = "Valdorn";
    switch (status) {
        case RunnerStatus::starting:
            return {outline, SystemColor::yellow, description};
        case RunnerStatus::noNetwork:
            return {outline, SystemColor::red, description};
        case RunnerStatus::connected:
            return {filled, SystemColor::green, description};
        case RunnerStatus::notRegistered:
        case RunnerStatus::stopped:
        case RunnerStatus::building:  // shown by the spinner, never asked for
            break;
    }
    return {outline, SystemColor::secondary, description};
}

}  // namespace

StatusMenu::StatusMenu(StatusItem& item, StatusMenuActions actions)
    : item_(item), model_(menuItems(std::move(actions))) {
    item_.setMenu(model_);
}

bool StatusMenu::isAnyRunning(const RunnersStore& store) {
    for (const auto& runner : store.runners()) {
        if (runner->isRunning())
            return true;
    }
    return false;
}

void StatusMenu::render(RunnerStatus status, const RunnersStore& store) {
    renderTexts(status, store);
    renderBuildLine(store);
    renderIcon(status);
}

void StatusMenu::renderTexts(RunnerStatus status, const RunnersStore& store) {
    const std::size_t count = store.runners().size();
    std::string statusLine = "Status: " + std::string(rawValue(status));
    if (count >= 2)
        statusLine += " · " + std::to_string(count) + " runners";
    model_.setTitle("statusLine", std::move(statusLine));

    const std::string suffix = count >= 2 ? " All" : " Runner";
    model_.setTitle("startStop", (isAnyRunning(store) ? "Stop" : "Start") + suffix);
    model_.setTitle("restart", "Restart" + suffix);
}

void StatusMenu::renderBuildLine(const RunnersStore& store) {
    for (const auto& runner : store.runners()) {
        if (!runner->currentBuild())
            continue;
        std::string title = "Building: ";
        if (store.runners().size() >= 2)
            title += runner->config().name + " — ";
        model_.setTitle("buildLine", title + *runner->currentBuild());
        model_.setHidden("buildLine", false);
        return;
    }
    model_.setHidden("buildLine", true);
}

void StatusMenu::renderIcon(RunnerStatus status) {
    if (status == RunnerStatus::building) {
        showSpinner();
        return;
    }
    hideSpinner();
    item_.setIcon(statusIcon(status));
}

void StatusMenu::showSpinner() {
    item_.clearIcon();
    item_.setLength(spinnerLengthPoints);
    item_.startSpinner();
}

void StatusMenu::hideSpinner() {
    if (!item_.isSpinning())
        return;
    item_.stopSpinner();
    item_.setLength(StatusItem::variableLength);
}

}  // namespace valdorn
