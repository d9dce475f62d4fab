#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "fleet/RunnersStore.h"
#include "support/FakeWorld.h"
#include "support/ScriptedHttpClient.h"

class QWidget;

namespace valdorn {

class RunnerStatusView;

// A fleet under a test's hand, and the status window's view on it.
class StatusStage {
public:
    StatusStage();
    ~StatusStage();

    // Makes the fleet, with each runner's name, all registered ("r0", "r1", ...), none running.
    void makeFleet(const std::vector<std::string>& names);
    void emptyFleet();

    // The view on the fleet, shown in a window.
    void show(int width = 480, int height = 260);

    RunnerManager& runner(std::size_t index) { return *store->runners().at(index); }
    ScriptedChild& child(std::size_t index) { return world.launcher.child(index); }

    // Starts the runner and gives the number of its child.
    std::size_t start(std::size_t index);
    void print(std::size_t child, const std::string& text);
    void end(std::size_t child);

    // What the daemon says.
    static std::string declared(const std::string& version);
    static std::string building(const std::string& repository, const std::string& job);

    // The release service's answer to the latest question.
    void releaseIs(const std::string& tag);

    // Time passes; what that changes is shown.
    void pass(std::chrono::milliseconds time) { world.queue.advance(time); }
    void settle();

    // Runners of every state, as people may have them.
    void makeOneRunner();
    void makeThreeRunners();
    void makeTwelveRunners();

    FakeWorld world;
    ScriptedHttpClient http;
    std::shared_ptr<RunnersStore> store;
    std::unique_ptr<QWidget> window;
    RunnerStatusView* view = nullptr;  // the window's
};

}  // namespace valdorn
