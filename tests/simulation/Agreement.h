#pragma once

#include <string>
#include <vector>

#include "simulation/Stage.h"

namespace valdorn::simulation {

// What the world and the model do not agree on, and what else must not be; nothing when all is well.
// What happened since the last call is looked at once and forgotten.
std::vector<std::string> disagreements(Stage& stage);

}  // namespace valdorn::simulation
