#include "simulation/Steps.h"

namespace valdorn::simulation {

const std::vector<StepKind>& stepKinds() {
    static const std::vector<StepKind> all = [] {
        std::vector<StepKind> kinds;
        Steps::addChildSteps(kinds);
        Steps::addRunnerSteps(kinds);
        Steps::addEditSteps(kinds);
        Steps::addRegistrationSteps(kinds);
        Steps::addTimeSteps(kinds);
        Steps::addDiskSteps(kinds);
        Steps::addLogSteps(kinds);
        Steps::addOutsideSteps(kinds);
        Steps::addProgramSteps(kinds);
        return kinds;
    }();
    return all;
}

void perform(const Step& step, Stage& stage) {
    Random random(step.salt);
    const bool settles = random.chance(80);
    stepKinds().at(step.kind).perform(stage, random);
    if (settles)
        return stage.settle();
    stage.unsettle();
    stage.tell("(not settled)");
}

}  // namespace valdorn::simulation
