#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

void starts(Stage& stage, Random& random) {
    if (const auto runner = stage.anyRunner(random)) {
        runner->real->start();
        runner->expected->start();
        stage.tell("start of runner " + std::to_string(runner->expected->view().number));
    }
}

void stops(Stage& stage, Random& random) {
    if (const auto runner = stage.anyRunner(random)) {
        runner->real->stop();
        runner->expected->stop();
        stage.tell("stop of runner " + std::to_string(runner->expected->view().number));
    }
}

// The button in the status window.
void toggles(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    if (runner->real->isRunning())
        runner->real->stop();
    else
        runner->real->start();
    if (runner->expected->isRunning())
        runner->expected->stop();
    else
        runner->expected->start();
    stage.tell("button of runner " + std::to_string(runner->expected->view().number));
}

void choosesStartStop(Stage& stage, Random&) {
    stage.program().statusItem.menu->activate(stage.program().statusItem.menu->items()[4].id);
    stage.process().shell.toggle();
    stage.tell("menu: start or stop");
}

void choosesRestart(Stage& stage, Random&) {
    stage.program().statusItem.menu->activate(stage.program().statusItem.menu->items()[5].id);
    stage.process().shell.restart();
    stage.tell("menu: restart");
}

}  // namespace

void Steps::addRunnerSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::runner, 30, starts});
    kinds.push_back({Field::runner, 30, stops});
    kinds.push_back({Field::runner, 30, toggles});
    kinds.push_back({Field::runner, 15, choosesStartStop});
    kinds.push_back({Field::runner, 25, choosesRestart});
}

}  // namespace valdorn::simulation
