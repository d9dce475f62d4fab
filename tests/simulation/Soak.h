#pragma once

#include <cstdint>
#include <optional>

namespace valdorn::simulation {

// What a long campaign takes.
struct SoakPlan {
    std::uint64_t schedules = 1000000;
    std::uint64_t firstSeed = 1;
    unsigned threads = 1;
};

// Plays schedules of all campaigns by turns, on several threads; tells on standard output how it
// goes. False when a schedule failed, which is told, or when a mark was never reached.
bool soak(const SoakPlan& plan);

// The plan that the arguments ask for; nothing when they ask for something else.
std::optional<SoakPlan> soakPlan(int count, char** arguments);

}  // namespace valdorn::simulation
