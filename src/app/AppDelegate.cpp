#include "app/AppDelegate.h"

#include <utility>

#include "app/Windows.h"
#include "fleet/RunnersStore.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/UserDefaults.h"
#include "platform/WindowHost.h"
#include "runner/Config.h"

namespace valdorn {

std::shared_ptr<AppDelegate> AppDelegate::create(AppEnvironment environment) {
    return std::make_shared<AppDelegate>(Key{}, std::move(environment));
}

AppDelegate::AppDelegate(Key, AppEnvironment environment)
    : environment_(std::move(environment)),
      refresh_(environment_.services.mainQueue, [this]() VALDORN_ON_MAIN_THREAD {
          const auto self = shared_from_this();  // whoever is told of it may drop us
          refresh();
      }) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    const Services& services = environment_.services;
    Config::registerDefaults(services.hostInfo, services.userDefaults);
    environment_.statusItem.setLength(StatusItem::variableLength);
    buildMenu();
    environment_.showItem();
    observeList();
    store().startAllRegistered();
    if (!services.userDefaults.boolean(Config::hasConnectedKey))
        showOnboarding();
}

void AppDelegate::buildMenu() {
    // Weak: the status item may outlive us.
    const auto action = [weak = weak_from_this()](void (AppDelegate::*operation)()) {
        return [weak, operation] {
            if (const auto self = weak.lock())
                ((*self).*operation)();
        };
    };
    statusMenu_.emplace(
        environment_.statusItem,
        StatusMenuActions{action(&AppDelegate::toggleRunner), action(&AppDelegate::restartRunner),
                          action(&AppDelegate::openStatus), action(&AppDelegate::showOnboarding),
                          action(&AppDelegate::openSettings), action(&AppDelegate::openLog),
                          action(&AppDelegate::quit)});
    statusMenu_->render(store().first()->status(), store());
}

MenuModel* AppDelegate::menu() {
    return statusMenu_ ? &statusMenu_->model() : nullptr;
}

void AppDelegate::observeList() {
    // The list announces before it changes, so it is looked at a turn later.
    const auto observe = [weak = weak_from_this()]() VALDORN_ON_MAIN_THREAD {
        if (const auto self = weak.lock())
            self->observeRunners();
    };
    MainQueue& queue = environment_.services.mainQueue;
    listSubscription_ = store().onRunnersWillSet(
        [&queue, observe](const RunnersStore::Runners&) { queue.post(observe); });
    queue.post(observe);
}

void AppDelegate::observeRunners() {
    runnerSubscriptions_.clear();
    for (const auto& runner : store().runners()) {
        runnerSubscriptions_.push_back(
            runner->onWillChange([weak = weak_from_this()]() VALDORN_ON_MAIN_THREAD {
                if (const auto self = weak.lock())
                    self->refresh_.request();
            }));
    }
    refresh();
}

void AppDelegate::refresh() {
    const RunnerStatus status = store().aggregateStatus();
    statusMenu_->render(status, store());
    UserDefaults& defaults = environment_.services.userDefaults;
    if (status == RunnerStatus::connected || status == RunnerStatus::building) {
        defaults.setBoolean(Config::hasConnectedKey, true);
    } else if (status == RunnerStatus::noNetwork && !defaults.boolean(Config::hasConnectedKey)) {
        showOnboarding();
    }
}

void AppDelegate::toggleRunner() {
    if (StatusMenu::isAnyRunning(store())) {
        store().stopAll();
    } else {
        store().startAllRegistered();
    }
}

void AppDelegate::restartRunner() {
    for (const auto& runner : store().runners())
        runner->restart();
}

void AppDelegate::openStatus() {
    environment_.windows.show(Windows::status());
}

void AppDelegate::showOnboarding() {
    environment_.windows.show(Windows::onboarding());
}

void AppDelegate::openSettings() {
    environment_.windows.show(Windows::settings());
}

void AppDelegate::openLog() {
    environment_.windows.show(Windows::log());
}

void AppDelegate::quit() {
    // Before the launch there is no fleet, and asking for it would make one without its defaults.
    if (statusMenu_)
        store().stopAll();
    environment_.terminate();
}

}  // namespace valdorn
