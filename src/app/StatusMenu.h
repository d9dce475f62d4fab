#pragma once

#include <functional>

#include "platform/MenuModel.h"
#include "platform/ThreadAnnotations.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

class RunnersStore;
class StatusItem;

// What the menu's entries do.
struct StatusMenuActions {
    std::function<void()> toggleRunner;
    std::function<void()> restartRunner;
    std::function<void()> openStatus;
    std::function<void()> showOnboarding;
    std::function<void()> openSettings;
    std::function<void()> openLog;
    std::function<void()> quit;
};

// The status item's menu and icon as a picture of the fleet. Main thread only.
class StatusMenu {
public:
    // Attaches the menu to the item, which may go before this but is then not rendered to any more.
    StatusMenu(StatusItem& item, StatusMenuActions actions);

    // The menu, for others who show it.
    MenuModel& model() { return model_; }

    // Recomputes every text from the fleet, and the icon from `status`.
    void render(RunnerStatus status, const RunnersStore& store) VALDORN_ON_MAIN_THREAD;

    // True when any runner of the fleet has a child that runs. The first one decides.
    static bool isAnyRunning(const RunnersStore& store) VALDORN_ON_MAIN_THREAD;

private:
    void renderTexts(RunnerStatus status, const RunnersStore& store) VALDORN_ON_MAIN_THREAD;
    void renderBuildLine(const RunnersStore& store) VALDORN_ON_MAIN_THREAD;
    void renderIcon(RunnerStatus status);
    void showSpinner();
    void hideSpinner();

    StatusItem& item_;
    MenuModel model_;
};

}  // namespace valdorn
