#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "runner/RunnerConfig.h"
#include "runner/RunnerStatus.h"
#include "simulation/ModelDisk.h"
#include "simulation/ModelLoop.h"

namespace valdorn::simulation {

class ModelRunner;

// A runner's published fields at one moment.
struct RunnerView {
    std::size_t number = 0;  // in the order of making
    RunnerConfig config;
    RunnerStatus status = RunnerStatus::stopped;
    std::optional<std::string> build;
    std::optional<std::string> job;
    std::optional<std::string> version;
    std::optional<Millis> startedAt;

    friend bool operator==(const RunnerView&, const RunnerView&) = default;
};

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
    std::vector<RunnerView> announcements;  // each with what stood there before

    std::string executable() const {
        return bundledRunner.value_or("/home/ada/actrunner/act_runner");
    }
};

}  // namespace valdorn::simulation
