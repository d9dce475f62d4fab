#include "simulation/Agreement.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

void opens(Stage& stage, Random& random) {
    const std::size_t entry = random.pick<std::size_t>({7, 8, 9});
    MenuModel& menu = *stage.program().statusItem.menu;
    menu.activate(menu.items()[entry].id);
    stage.process().shell.show(entry == 7   ? WindowKind::status
                               : entry == 8 ? WindowKind::onboarding
                                            : WindowKind::settings);
    stage.tell("a window is opened");
}

void closes(Stage& stage, Random& random) {
    const WindowKind kind =
        random.pick({WindowKind::settings, WindowKind::status, WindowKind::onboarding});
    stage.program().windows.closeAsUser(kind);
    stage.process().shell.open.erase(kind);
    stage.tell("a window is closed");
}

void actRunnerIsShippedOrNot(Stage& stage, Random&) {
    auto& bundled = stage.model.bundledRunner;
    auto& paths = stage.machine.resources.paths;
    if (bundled) {
        bundled.reset();
        paths.erase("act_runner");
    } else {
        bundled = "/opt/valdorn/act_runner";
        paths["act_runner"] = *bundled;
    }
    stage.process().machine.bundledRunner = bundled;
    stage.tell("the shipped act_runner comes or goes");
}

void plantList(Stage& stage, const std::string& text) {
    stage.model.disk.overwrite(ModelDisk::listPath(), text);
    (void)stage.machine.files.replaceContent(ModelDisk::listPath(), text);
}

// While nobody looks, somebody edits the list by hand, rightly or not.
void tamperWithList(Stage& stage, Random& random) {
    constexpr const char* right =
        R"([ {"legacy":false,"labels":"a","extra":[1],"id":"byhand","name":"h/h","instanceURL":"http:\/\/x","extraPath":""} ])";
    constexpr const char* wrong[] = {
        "",
        "[]",
        "{}",
        "[{}]",
        "null",
        "[1]",
        R"([{"id":"a","name":"b","instanceURL":"","labels":"","extraPath":""}])",
        R"([{"id":"a","name":"b","instanceURL":"","labels":"","extraPath":"","legacy":"no"}])",
        R"([{"id":"a","name":null,"instanceURL":"","labels":"","extraPath":"","legacy":true}])",
        R"([{"id":1,"name":"b","instanceURL":"","labels":"","extraPath":"","legacy":true}])"};
    stage.model.texts.teach(right, {{"byhand", "h/h", "http://x", "a", "", false}});
    stage.model.texts.teach("[]", {});
    const bool isRight = random.chance(30);
    plantList(stage, isRight ? right : wrong[random.below(std::size(wrong))]);
    stage.tell("the list is edited by hand");
}

// The loop runs what is posted before it ends.
void endsItsLoop(Stage& stage) {
    stage.settle();
    for (const std::string& disagreement : disagreements(stage))
        stage.fail(disagreement);
}

void restarts(Stage& stage, Random& random) {
    if (random.chance(50)) {
        reached<"quit">();
        MenuModel& menu = *stage.program().statusItem.menu;
        menu.activate(menu.items()[12].id);
        stage.process().shell.quit();
        stage.tell("quit");
        if (random.chance(50))
            endsItsLoop(stage);
    } else {
        reached<"crash">();
        stage.tell("crash");
    }
    if (stage.program().terminations != stage.process().shell.terminations)
        stage.fail("the event loop was not ended");
    const auto& children = stage.process().machine.children;
    for (std::size_t index = 0; index < children.size(); ++index) {
        if (stage.program().launcher.child(index).terminateRequests() !=
            children[index]->terminateRequests)
            stage.fail("a child was not asked to end as it should at the end of the program");
    }
    if (random.chance(25))
        tamperWithList(stage, random);
    stage.model.disk.faults.readingList = random.chance(5);
    stage.restart();
    stage.tell("the program begins anew");
}

}  // namespace

void Steps::addProgramSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::program, 30, opens});
    kinds.push_back({Field::program, 20, closes});
    kinds.push_back({Field::program, 10, actRunnerIsShippedOrNot});
    kinds.push_back({Field::program, 25, restarts});
}

}  // namespace valdorn::simulation
