#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/Announcement.h"
#include "simulation/ModelDisk.h"
#include "simulation/ModelLoop.h"

namespace valdorn::simulation {

class ModelRunner;

// One attempt to launch a daemon.
struct LaunchRecord {
    Millis time = 0;
    std::string executable;
    std::vector<std::string> arguments;
    std::string folder;
    std::vector<std::string> environment;  // sorted

    friend bool operator==(const LaunchRecord&, const LaunchRecord&) = default;
};

// A child as the model sees it.
struct ModelChild {
    std::weak_ptr<ModelRunner> runner;
    bool isRunning = true;
    int terminateRequests = 0;
    std::string incompleteLine;
    ModelDisk::Content log;
};

// What the runners of the model run on, and what they leave behind to be compared. The host and the
// plans are set by the steps.
struct ModelMachine {
    explicit ModelMachine(ModelDisk& files) : disk(files) {}

    ModelLoop loop;
    ModelDisk& disk;

    std::vector<std::string> environment;      // "NAME=value"
    std::optional<std::string> bundledRunner;  // its path, when it is shipped
    bool nextLaunchFails = false;
    bool everyLaunchFails = false;

    std::vector<LaunchRecord> launches;
    std::vector<std::shared_ptr<ModelChild>> children;
    Announcements announcements;

    std::string executable() const {
        return bundledRunner.value_or("/home/ada/actrunner/act_runner");
    }
};

}  // namespace valdorn::simulation
