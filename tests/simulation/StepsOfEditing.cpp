#include "simulation/Grammar.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

void edits(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    RunnerConfig config = runner->expected->view().config;
    const std::size_t field = random.below(4);
    if (field == 0)
        config.instanceURL = Grammar::field(random);
    else if (field == 1)
        config.name = Grammar::field(random);
    else if (field == 2)
        config.labels = Grammar::field(random);
    else
        config.extraPath = Grammar::folders(random);
    if (runner->expected->isRunning())
        reached<"edited while running">();
    runner->real->setConfig(config);
    runner->expected->setConfig(config);
    stage.tell("edit of field " + std::to_string(field) + " of runner " +
               std::to_string(runner->expected->view().number));
}

void adds(Stage& stage, Random&) {
    if (stage.fleet().runners().size() >= 6)
        return;
    stage.program().selection->add();
    const std::string& id = stage.program().store->runners().back()->id();
    if (!stage.fleet().isNewId(id))
        stage.fail("a new runner has the id " + shown(id));
    stage.process().selection->add(id);
    stage.tell("a runner is added");
}

void removesTheSelected(Stage& stage, Random&) {
    if (stage.fleet().runners().empty())
        return;
    stage.program().selection->removeSelected();
    stage.process().selection->removeSelected();
    stage.tell("the selected runner is removed");
}

// Also the last one, which no window offers.
void removesAny(Stage& stage, Random& random) {
    auto runner = stage.anyRunner(random);
    if (!runner || (stage.fleet().runners().size() == 1 && !random.chance(10)))
        return;
    if (runner->expected->relaunchesDue() > 0)
        reached<"removed while a relaunch is due">();
    stage.tell("runner " + std::to_string(runner->expected->view().number) + " is removed");
    stage.program().store->remove(runner->real);
    stage.fleet().remove(runner->expected);
}

void selects(Stage& stage, Random& random) {
    std::optional<std::string> id;
    if (const auto runner = stage.anyRunner(random); runner && random.chance(80))
        id = runner->expected->view().config.id;
    else if (random.chance(50))
        id = "nobody";
    stage.program().selection->select(id);
    stage.process().selection->select(id);
    stage.tell("another runner is selected");
}

}  // namespace

void Steps::addEditSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::edit, 50, edits});
    kinds.push_back({Field::edit, 15, adds});
    kinds.push_back({Field::edit, 8, removesTheSelected});
    kinds.push_back({Field::edit, 12, removesAny});
    kinds.push_back({Field::edit, 15, selects});
}

}  // namespace valdorn::simulation
