#include <cerrno>

#include "simulation/Grammar.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

void typesAToken(Stage& stage, Random& random) {
    const std::size_t form = random.below(formCount);
    const std::string token = random.pick({"", "t0ken", "with blanks in it", "漢"});
    stage.program().forms[form]->setToken(token);
    stage.process().forms[form]->setToken(token);
    stage.tell("a token is typed");
}

void registers(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    const std::size_t form = random.below(formCount);
    if (random.chance(70)) {
        stage.program().forms[form]->setToken("t0ken");
        stage.process().forms[form]->setToken("t0ken");
    }
    stage.program().forms[form]->doRegister(runner->real);
    if (auto run = stage.process().forms[form]->beginRegistration(runner->expected))
        stage.process().background.push_back(std::move(run));
    else
        reached<"registering is not possible">();
    stage.tell("registration of runner " + std::to_string(runner->expected->view().number));
}

ToolScript anyScript(Random& random) {
    ToolScript script;
    script.chunks = Grammar::cut(random, Grammar::toolOutput(random));
    script.exitNumber = random.chance(50) ? 0 : 1 + static_cast<int>(random.below(20));
    script.writesMarker = random.chance(script.exitNumber == 0 ? 85 : 5);
    if (random.chance(10))
        script.launchFailure =
            "The executable could not be started: act_runner: No such file or directory";
    return script;
}

void scriptRun(Stage& stage, Random& random, const ToolScript& script) {
    TimedLauncher& launcher = stage.program().launcher;
    const auto kind = random.pick({ChildExit::Kind::exited, ChildExit::Kind::signalled});
    if (script.launchFailure)
        launcher.runScript.emplace_back(
            LaunchError{LaunchError::Step::execute, ENOENT, "act_runner"});
    else
        launcher.runScript.emplace_back(ScriptedRun{
            script.chunks,
            {script.exitNumber == 0 ? ChildExit::Kind::exited : kind, script.exitNumber}});
    launcher.duringRun = [&] {
        if (!script.writesMarker)
            return;
        const std::string folder = launcher.runs.back().workingFolder;
        (void)stage.machine.files.makeFolders(folder);
        (void)stage.machine.files.replaceAtomically(folder + "/.runner", "");
    };
}

// A run of the tool that waits is made, whichever: the later one may be the first to end.
void toolRuns(Stage& stage, Random& random) {
    auto& waiting = stage.process().background;
    if (waiting.empty())
        return;
    const std::size_t index = random.below(waiting.size());
    if (index > 0)
        reached<"registrations out of order">();
    const ToolScript script = anyScript(random);
    scriptRun(stage, random, script);
    stage.program().background.runAt(index);
    const auto run = std::move(waiting[index]);
    waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(index));
    run(script);
    stage.tell("the tool ends with " + std::to_string(script.exitNumber));
}

}  // namespace

void Steps::addRegistrationSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::registration, 10, typesAToken});
    kinds.push_back({Field::registration, 45, registers});
    kinds.push_back({Field::registration, 45, toolRuns});
}

}  // namespace valdorn::simulation
