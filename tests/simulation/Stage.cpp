#include "simulation/Stage.h"

#include <chrono>
#include <cstdio>

#include "simulation/Grammar.h"
#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

constexpr std::size_t longestShown = 120;

RunnerConfig anyRecord(Random& random, std::size_t number) {
    RunnerConfig record{"runner-" + std::to_string(number),
                        "box " + std::to_string(number),
                        "http://gitea.test",
                        "macos",
                        "",
                        false};
    if (random.chance(10))
        record.id = random.pick({"runner-0", "two words", "é漢", "", ".", "..", "a", "a/b", "/a"});
    if (random.chance(20))
        record.name = Grammar::field(random);
    if (random.chance(20))
        record.labels = Grammar::field(random);
    if (random.chance(20))
        record.extraPath = Grammar::folders(random);
    record.legacy = random.chance(15);
    return record;
}

}  // namespace

std::string shown(std::string_view text) {
    std::string all = "\"";
    for (const char letter : text.substr(0, longestShown)) {
        const auto code = static_cast<unsigned char>(letter);
        char escaped[8] = {};
        if (code < 0x20 || code > 0x7E)
            std::snprintf(escaped, sizeof escaped, "\\x%02X", code);
        all += *escaped == '\0' ? std::string(1, letter) : escaped;
    }
    all += "\"";
    return text.size() > longestShown ? all + "... of " + std::to_string(text.size()) + " bytes"
                                      : all;
}

Stage::Stage(std::uint64_t seed) {
    Random random(seed);
    setUpHost(random);
    setUpDefaults(random);
    setUpList(random);
    begin();
}

void Stage::setUpHost(Random& random) {
    model.environment = {"HOME=/home/ada", "LANG=C.UTF-8"};
    if (random.chance(80))
        model.environment.emplace_back("PATH=/somewhere:/else");
    model.environment.emplace_back("XPATH=kept");
    if (random.chance(70))
        model.computerName = random.pick({"My Mac", "box", "A  B", "Ünit 7", ""});
    if (random.chance(30))
        model.bundledRunner = "/opt/valdorn/act_runner";
    machine.host.variables = model.environment;
    machine.host.name = model.computerName;
    if (model.bundledRunner)
        machine.resources.paths["act_runner"] = *model.bundledRunner;
}

void Stage::setUpDefaults(Random& random) {
    for (const char* key : {"instanceURL", "runnerName", "labels", "extraPath"}) {
        if (random.chance(25))
            model.defaults.texts[key] = Grammar::field(random);
    }
    machine.defaults.strings = model.defaults.texts;
    model.defaults.hasConnected = random.chance(50);
    if (model.defaults.hasConnected)
        machine.defaults.booleans["hasConnected"] = true;
}

void Stage::setUpList(Random& random) {
    (void)machine.files.makeFolders("/home/ada");
    const std::size_t count = random.chance(15) ? 0 : 1 + random.below(4);
    if (count == 0 && random.chance(50))
        return;
    std::vector<RunnerConfig> records;
    for (std::size_t number = 0; number < count; ++number)
        records.push_back(anyRecord(random, number));
    const std::string text = ModelListTexts::encoded(records);
    model.texts.teach(text, records);
    model.disk.plantFolder(ModelDisk::support);
    model.disk.overwrite(ModelDisk::listPath(), text);
    (void)machine.files.makeFolders(ModelDisk::support);
    machine.files.files[ModelDisk::listPath()] = text;
    for (const RunnerConfig& record : records) {
        if (!random.chance(80))
            continue;
        const std::string folder = ModelRunner::dataFolder(record);
        model.disk.plantFolder(folder);
        model.disk.plantFile(folder + "/.runner", "");
        (void)machine.files.makeFolders(folder);
        machine.files.files[folder + "/.runner"] = "";
    }
}

void Stage::begin() {
    isSettled_ = false;
    program_ = std::make_unique<Program>(machine);
    model.begin();
}

void Stage::restart() {
    program_.reset();
    model.end();
    if (machine.files.openHandles() != 0)
        fail("files are open after the end of the program");
    begin();
}

void Stage::settle() {
    queue().runPosted();
    process().machine.loop.run();
    isSettled_ = true;
}

void Stage::advance(Millis step) {
    queue().advance(std::chrono::milliseconds(step));
    process().machine.loop.advance(step);
    isSettled_ = true;
}

std::optional<Stage::Runner> Stage::anyRunner(Random& random) {
    const auto& expected = fleet().runners();
    const auto& real = program().store->runners();
    if (expected.empty() || real.size() != expected.size())
        return std::nullopt;
    const std::size_t index = random.below(expected.size());
    return Runner{real[index], expected[index]};
}

std::optional<std::size_t> Stage::anyChild(Random& random) {
    const auto& children = process().machine.children;
    if (children.empty())
        return std::nullopt;
    const std::size_t start = random.below(children.size());
    if (random.chance(5))
        return start;
    for (std::size_t step = 0; step < children.size(); ++step) {
        const std::size_t index = (start + step) % children.size();
        if (children[index]->isRunning)
            return index;
    }
    return std::nullopt;
}

}  // namespace valdorn::simulation
