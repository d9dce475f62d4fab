#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "app/StatusMenu.h"
#include "platform/DeferredUpdate.h"
#include "platform/Observable.h"
#include "platform/Services.h"

namespace valdorn {

class RunnersStore;
class StatusItem;
class WindowHost;

// The outside world as the delegate needs it; all of it outlives the delegate.
struct AppEnvironment {
    const Services& services;
    StatusItem& statusItem;
    WindowHost& windows;
    // The fleet, made when it is first asked for.
    std::function<RunnersStore&()> sharedStore;
    // Ends the event loop.
    std::function<void()> terminate;
    // Called once, when the status item has its menu and its first picture, and before anything is
    // started: launching three runners takes a seventh of the time to the picture in the bar.
    std::function<void()> showItem;
};

// Runs the program: keeps the status item in step with the fleet, starts the fleet at launch and
// opens the windows. Main thread only; lives as long as the process, and nothing that it
// subscribes to keeps it alive.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
    struct Key {};

public:
    // Creates the delegate; nothing happens before applicationDidFinishLaunching().
    static std::shared_ptr<AppDelegate> create(AppEnvironment environment);

    AppDelegate(Key, AppEnvironment environment);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    // Called once, when the event loop is about to run: registers the defaults, makes the menu, has
    // the item shown, starts the fleet, and shows the onboarding window unless a runner has
    // connected before.
    void applicationDidFinishLaunching() VALDORN_ON_MAIN_THREAD;

    // The menu's actions. Starting and stopping is decided by live children, not by statuses.
    void toggleRunner() VALDORN_ON_MAIN_THREAD;
    void restartRunner() VALDORN_ON_MAIN_THREAD;
    void openStatus() VALDORN_ON_MAIN_THREAD;
    void showOnboarding() VALDORN_ON_MAIN_THREAD;
    void openSettings() VALDORN_ON_MAIN_THREAD;
    void openLog() VALDORN_ON_MAIN_THREAD;
    // Asks every runner to stop, then ends the program without waiting for them. The one operation
    // that may be called before applicationDidFinishLaunching(): then there is nothing to stop.
    void quit() VALDORN_ON_MAIN_THREAD;

    // The status menu, for a window that offers it where there is no status bar; nothing before
    // applicationDidFinishLaunching().
    MenuModel* menu() VALDORN_ON_MAIN_THREAD;

private:
    void buildMenu() VALDORN_ON_MAIN_THREAD;
    void observeList() VALDORN_ON_MAIN_THREAD;
    void observeRunners() VALDORN_ON_MAIN_THREAD;
    void refresh() VALDORN_ON_MAIN_THREAD;
    RunnersStore& store() VALDORN_ON_MAIN_THREAD { return environment_.sharedStore(); }

    const AppEnvironment environment_;
    std::optional<StatusMenu> statusMenu_ VALDORN_MAIN_THREAD_ONLY;
    DeferredUpdate refresh_ VALDORN_MAIN_THREAD_ONLY;
    Subscription listSubscription_ VALDORN_MAIN_THREAD_ONLY;
    std::vector<Subscription> runnerSubscriptions_ VALDORN_MAIN_THREAD_ONLY;
};

}  // namespace valdorn
