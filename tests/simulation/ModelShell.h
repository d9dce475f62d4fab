#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/SystemColor.h"
#include "platform/WindowHost.h"
#include "simulation/ModelFleet.h"

namespace valdorn::simulation {

// One entry of the menu as people see it.
struct MenuLine {
    std::string title;
    bool isHidden = false;
    bool isEnabled = true;
    bool isSeparator = false;
    char shortcut = 0;

    friend bool operator==(const MenuLine&, const MenuLine&) = default;
};

// A window as it was asked for.
struct WindowView {
    WindowKind kind = WindowKind::status;
    std::string title;
    int width = 0;
    int height = 0;
    bool isResizable = false;

    friend bool operator==(const WindowView&, const WindowView&) = default;
};

// The status item as people see it.
struct IconView {
    std::optional<std::string> symbol;
    SystemColor color = SystemColor::secondary;
    bool isSpinning = false;
    int length = -1;

    friend bool operator==(const IconView&, const IconView&) = default;
};

// The menu, the icon and the opening of windows by the rules. A change that is announced is looked at
// in a task of its own, after the turn that brought it: one for each change of the list, one for all
// changes of runners that came before it ran.
class ModelShell {
public:
    ModelShell(ModelLoop& loop, ModelDefaults& defaults) : loop_(loop), defaults_(defaults) {}

    std::vector<MenuLine> menu;  // empty before the launch
    IconView icon;
    std::vector<WindowView> shown;  // in order, each time
    std::set<WindowKind> open;
    int terminations = 0;

    // The fleet is made when the menu first asks for it.
    void launch(const std::function<ModelFleet&()>& makeFleet);

    void toggle();
    void restart();
    void quit();
    void show(WindowKind kind);

private:
    void subscribe();
    void observeRunners();
    void runnerWillChange(const ModelRunner& runner);
    void refresh();
    void render(RunnerStatus status);
    void renderBuildLine();
    void renderIcon(RunnerStatus status);

    ModelLoop& loop_;
    ModelDefaults& defaults_;
    ModelFleet* fleet_ = nullptr;
    std::set<std::size_t> observed_;  // by number
    bool isRefreshDue_ = false;
};

}  // namespace valdorn::simulation
