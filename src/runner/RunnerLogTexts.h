#pragma once

#include <array>
#include <string_view>

namespace valdorn {

// What the daemon's lines are recognised by.
namespace RunnerLogTexts {

inline constexpr std::string_view version = "with version: ";
inline constexpr std::string_view repository = " repo is ";
inline constexpr std::string_view jobStarted = "Running job with maxParallel";
inline constexpr std::string_view worker = "Worker";
inline constexpr std::string_view finished = "finished (";
inline constexpr std::string_view declared = "declare successfully";
inline constexpr std::string_view noRoute = "no route to host";
inline constexpr std::string_view denied = "permission denied";

// Those without one of which a line tells neither a version nor an event. The worker is none of
// them: it tells something only together with its end.
inline constexpr std::array telling{version,  repository, jobStarted, finished,
                                    declared, noRoute,    denied};

}  // namespace RunnerLogTexts

}  // namespace valdorn
