#include "runner/RunnerStatus.h"

#include <array>

namespace valdorn {

namespace {

// In the order of the enumeration.
constexpr std::array<std::string_view, 6> titles = {
    "Not registered",          "Stopped",          "Starting…",
    "No local-network access", "Connected — idle", "Building a job",
};
static_assert(titles.size() == static_cast<std::size_t>(RunnerStatus::building) + 1);

}  // namespace

std::string_view rawValue(RunnerStatus status) {
    return titles[static_cast<std::size_t>(status)];
}

std::optional<RunnerStatus> runnerStatus(std::string_view rawValue) {
    for (std::size_t index = 0; index < titles.size(); ++index) {
        if (titles[index] == rawValue)
            return static_cast<RunnerStatus>(index);
    }
    return std::nullopt;
}

}  // namespace valdorn
