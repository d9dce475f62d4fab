#pragma once

#include <memory>

#include "platform/DeferredUpdate.h"
#include "platform/Observable.h"
#include "ui/WindowView.h"

namespace valdorn {

class CheckBox;
class LoginItemRegistry;
class MainQueue;
class RegistrationForm;
class RunnerDetail;
class RunnerSelection;
class RunnerSidebar;
class SystemLog;

// What the settings window needs from outside; all of it outlives the view.
struct SettingsEnvironment {
    MainQueue& queue;
    LoginItemRegistry& loginItems;
    SystemLog& log;
};

// The content of the settings window: the runners, the selected one's record and registration, and
// whether the program starts at login. Runners are edited in place; there is nothing to save.
//
// Thread: main thread only. Selection, token, outcome and the switch are kept while the window is
// closed. The registry of login items is asked once, when this is made: after that the switch shows
// what the user last chose, whatever became of it.
class ValdornSettingsView : public WindowView {
    Q_OBJECT

public:
    ValdornSettingsView(SettingsEnvironment environment, std::shared_ptr<RunnerSelection> selection,
                        std::shared_ptr<RegistrationForm> registration);
    ~ValdornSettingsView() override;

protected:
    void appeared() override;

private:
    QWidget* makeRunners();
    QWidget* makeLaunchSwitch();
    void refresh() VALDORN_ON_MAIN_THREAD;

    const SettingsEnvironment environment_;
    const std::shared_ptr<RunnerSelection> selection_;
    RunnerSidebar* const sidebar_;
    RunnerDetail* const detail_;
    CheckBox* const launchAtLogin_;
    DeferredUpdate update_;
    Subscription listChanges_;
    Subscription selectionChanges_;
};

}  // namespace valdorn
