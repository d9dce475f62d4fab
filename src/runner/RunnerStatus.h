#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

namespace valdorn {

// What one runner, or the whole fleet, is doing. Pure values; any thread.
enum class RunnerStatus {
    notRegistered,  // its data folder has no registration marker; nothing can be started
    stopped,        // no child runs and none is meant to; also a freshly made runner
    starting,       // a child was launched and has not declared itself to the server yet
    noNetwork,      // the child reported that the local network is out of reach
    connected,      // the child declared itself to the server and runs no job
    building,       // the child runs a job
};

// The status's title as people read it; also its stable textual form (UTF-8).
std::string_view rawValue(RunnerStatus status);

// The status of exactly that title, or nothing. Case counts, and "…" is one character.
std::optional<RunnerStatus> runnerStatus(std::string_view rawValue);

}  // namespace valdorn

template <>
struct std::hash<valdorn::RunnerStatus> {
    // The hash of the title, so that a status and its textual form fall into the same bucket.
    std::size_t operator()(valdorn::RunnerStatus status) const noexcept {
        return std::hash<std::string_view>{}(valdorn::rawValue(status));
    }
};
