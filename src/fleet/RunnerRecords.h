#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runner/RunnerConfig.h"

namespace valdorn {

// The JSON form of the runner list: one array of records, in list order. Pure; any thread.
namespace RunnerRecords {

// Compact JSON with the keys in the order of the fields, each slash escaped, no line end behind
// it. Nothing when a text is not UTF-8.
std::optional<std::string> encode(const std::vector<RunnerConfig>& records);

// The records, or nothing when the text is no array of records: each needs all six keys with the
// right types. Other keys are ignored; ids are not checked.
std::optional<std::vector<RunnerConfig>> decode(std::string_view json);

}  // namespace RunnerRecords

}  // namespace valdorn
