#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "simulation/Random.h"
#include "simulation/Stage.h"

namespace valdorn::simulation {

// What steps are about; a campaign weighs these.
enum class Field { child, runner, edit, registration, time, disk, log, outside, program };
inline constexpr std::size_t fieldCount = 9;

// A kind of step: what it does to the world and the model, by what it draws.
struct StepKind {
    Field field;
    unsigned weight;  // within its field
    void (*perform)(Stage& stage, Random& random);
};

// All kinds there are.
const std::vector<StepKind>& stepKinds();

// One step: a kind and all that it draws. It means the same wherever it stands, so that steps before
// it can be left out.
struct Step {
    std::size_t kind = 0;  // index of stepKinds()
    std::uint64_t salt = 0;
};

// Does it, and most often runs what is posted then.
void perform(const Step& step, Stage& stage);

namespace Steps {

// One file for each field.
void addChildSteps(std::vector<StepKind>& kinds);
void addRunnerSteps(std::vector<StepKind>& kinds);
void addEditSteps(std::vector<StepKind>& kinds);
void addRegistrationSteps(std::vector<StepKind>& kinds);
void addTimeSteps(std::vector<StepKind>& kinds);
void addDiskSteps(std::vector<StepKind>& kinds);
void addLogSteps(std::vector<StepKind>& kinds);
void addOutsideSteps(std::vector<StepKind>& kinds);
void addProgramSteps(std::vector<StepKind>& kinds);

}  // namespace Steps

}  // namespace valdorn::simulation
