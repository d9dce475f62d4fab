#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "runner/RunnerConfig.h"
#include "runner/RunnerStatus.h"
#include "simulation/ModelLoop.h"

namespace valdorn::simulation {

// What stands in an object when it announces that it is about to change: what was there before. One
// kind for each object that announces anything.

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

// The list of runners, by their numbers. Whoever asks for it is told what is coming, too.
struct ListView {
    std::vector<std::size_t> runners;
    std::optional<std::vector<std::size_t>> coming;

    friend bool operator==(const ListView&, const ListView&) = default;
};

struct SelectionView {
    std::optional<std::string> id;

    friend bool operator==(const SelectionView&, const SelectionView&) = default;
};

struct FormView {
    std::size_t number = 0;
    std::string token;
    bool isBusy = false;
    std::optional<std::string> message;
    bool isOk = false;

    friend bool operator==(const FormView&, const FormView&) = default;
};

// The log's lines: how many, and the last of them.
struct LogView {
    std::size_t count = 0;
    std::string last;

    friend bool operator==(const LogView&, const LogView&) = default;
};

struct ReleaseView {
    std::optional<std::string> latest;

    friend bool operator==(const ReleaseView&, const ReleaseView&) = default;
};

using Announcement =
    std::variant<RunnerView, ListView, SelectionView, FormView, LogView, ReleaseView>;

// Of all objects, in the order in which they came.
using Announcements = std::vector<Announcement>;

}  // namespace valdorn::simulation
