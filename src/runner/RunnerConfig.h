#pragma once

#include <string>

namespace valdorn {

// The record of one runner, as the user edits it. A plain value, copied and never shared; equality
// is byte for byte over all fields, identity is `id` alone. All texts are UTF-8.
struct RunnerConfig {
    std::string id;    // stable identity; names the data folder of a runner that is not legacy
    std::string name;  // shown, and the name under which the runner registers
    std::string instanceURL;  // of the Gitea instance, as typed; may be empty
    std::string labels;       // comma-separated, passed on unparsed; may be empty
    std::string extraPath;    // colon-separated folders, first in the child's PATH; may be empty
    bool legacy = false;      // migrated from the one-runner settings: lives in the support folder

    friend bool operator==(const RunnerConfig&, const RunnerConfig&) = default;
};

// What a runner is called where it is listed.
inline std::string displayName(const RunnerConfig& config) {
    return config.name.empty() ? "runner" : config.name;
}

// The labels of a new runner, and of a registration without any.
inline constexpr char defaultLabels[] = "macos";

}  // namespace valdorn
