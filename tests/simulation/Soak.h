#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace valdorn::simulation {

// What a long campaign takes.
struct SoakPlan {
    std::uint64_t schedules = 1000000;
    std::uint64_t firstSeed = 1;
    unsigned threads = 1;
};

// Plays schedules of all campaigns by turns, on several threads; tells on standard output how it
// goes, and which marks were never reached. False when a schedule failed, or when a mark was never
// reached though there were schedules enough.
bool soak(const SoakPlan& plan);

// Whether any of the arguments, of which the first names the program, is of a soak.
bool asksForSoak(const std::vector<std::string_view>& arguments);

// The plan that the arguments ask for; nothing when one of them is unknown, or has no number, or a 0
// that would mean that nothing is played.
std::optional<SoakPlan> soakPlan(const std::vector<std::string_view>& arguments);

}  // namespace valdorn::simulation
