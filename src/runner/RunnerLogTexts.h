#pragma once

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

}  // namespace RunnerLogTexts

}  // namespace valdorn
