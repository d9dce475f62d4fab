#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulation/Steps.h"

namespace valdorn::simulation {

// What a campaign is about: how often there is a step of each field.
struct Campaign {
    const char* name;
    std::array<unsigned, fieldCount> weights;  // in the order of Field
    std::size_t mostSteps;
};

// All campaigns; a name names one of them.
const std::vector<Campaign>& campaigns();

// One run of the simulation: a computer, and what happens on it.
struct Schedule {
    std::uint64_t setUp = 0;
    std::vector<Step> steps;
};

// The schedule of that seed. The same on every computer and by every compiler.
Schedule draw(const Campaign& campaign, std::uint64_t seed);

// Where the world and the model parted.
struct Parting {
    std::size_t step = 0;  // how many steps had been taken; 0 for the launch
    std::vector<std::string> disagreements;
    std::vector<std::string> story;  // what happened, one text for each step
};

enum class Telling { off, on };

// Plays it, comparing after each step; nothing when all agree to the end.
std::optional<Parting> play(const Schedule& schedule, Telling telling = Telling::off);

// A schedule that fails, without the steps that it does not need to.
Schedule shrunk(Schedule schedule, const std::function<bool(const Schedule&)>& fails);

// What people are told of a schedule that failed: how to replay it, what happened in the least of it
// that fails, and on what the two do not agree.
std::string report(const Campaign& campaign, std::uint64_t seed);

}  // namespace valdorn::simulation
