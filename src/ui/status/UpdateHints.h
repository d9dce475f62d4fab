#pragma once

#include <map>
#include <optional>
#include <string>

#include "ui/status/RunnerRowContent.h"

namespace valdorn {

// How the versions of the runners compare with the latest release, in words. Each version is compared
// once: a tag may be as long as an answer can be, and the rows look every second. Main thread only.
class UpdateHints {
public:
    // The tag of the latest release, when known.
    void setLatest(const std::optional<std::string>& latest);

    // None without both; valid until the next call.
    const RunnerRowContent::Hint* of(const std::optional<std::string>& version);

private:
    // More than a fleet has at a time; a runner that calls itself something else each time it
    // starts fills no memory.
    static constexpr std::size_t mostVersions = 32;

    std::optional<std::string> latest_;
    std::map<std::string, RunnerRowContent::Hint> hints_;  // by version
};

}  // namespace valdorn
