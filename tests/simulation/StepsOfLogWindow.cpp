#include "fleet/LogPath.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

// What changes the lines happens to a window that shows what came before, and may be copied from
// before it has shown what came of it.

void makeWindow(Stage& stage) {
    stage.program().makeViewer();
    stage.process().log = std::make_unique<ModelLog>(
        stage.process().machine, stage.fleet().runners().front()->dataFolder() + "/valdorn.log");
}

void opens(Stage& stage, Random&) {
    stage.settle();
    if (!stage.process().log && stage.fleet().runners().empty())
        return;
    stage.program().delegate->openLog();
    stage.process().shell.show(WindowKind::log);
    if (!stage.process().log)
        makeWindow(stage);
    if (!stage.process().log->isPolling()) {
        stage.program().viewer->start();
        stage.process().log->start();
    }
    stage.tell("the log window is opened");
}

void closes(Stage& stage, Random&) {
    if (!stage.process().log)
        return;
    stage.program().windows.closeAsUser(WindowKind::log);
    stage.process().shell.open.erase(WindowKind::log);
    stage.program().viewer->stop();
    stage.process().log->stop();
    stage.tell("the log window is closed");
}

void filters(Stage& stage, Random& random) {
    if (!stage.process().log)
        return;
    stage.settle();
    if (random.chance(50)) {
        const std::string query = random.pick({"", "", "JOB", "msg", "Level=", "line 51", "zzz"});
        stage.program().viewer->setQuery(query);
        stage.process().log->setQuery(query);
        stage.tell("the log is searched for " + shown(query));
    } else {
        const LevelFilter level = random.pick(levelFilters);
        stage.program().viewer->setLevel(level);
        stage.process().log->setLevel(level);
        stage.tell("another level is chosen");
    }
    stage.settle();
}

void follows(Stage& stage, Random& random) {
    if (!stage.process().log)
        return;
    stage.settle();
    const bool follow = random.chance(60);
    stage.program().viewer->setFollow(follow);
    stage.process().log->setFollow(follow);
    stage.tell(follow ? "the log is followed" : "the log is not followed");
}

void clears(Stage& stage, Random&) {
    if (!stage.process().log)
        return;
    stage.settle();
    stage.program().viewer->clear();
    stage.process().log->clear();
    stage.tell("the log window is cleared");
}

// What is copied are the lines that pass at this moment, shown yet or not.
void copies(Stage& stage, Random&) {
    if (!stage.process().log)
        return;
    if (stage.program().viewer->text() != stage.process().log->text())
        stage.fail("other lines are copied");
    if (stage.program().viewer->filtered().size() != stage.process().log->filtered().size())
        reached<"lines copied that are not shown yet">();
    stage.tell("the log is copied");
}

}  // namespace

void Steps::addLogSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::log, 40, opens});
    kinds.push_back({Field::log, 15, closes});
    kinds.push_back({Field::log, 30, filters});
    kinds.push_back({Field::log, 10, follows});
    kinds.push_back({Field::log, 10, clears});
    kinds.push_back({Field::log, 30, copies});
}

}  // namespace valdorn::simulation
