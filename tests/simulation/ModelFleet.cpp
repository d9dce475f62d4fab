#include "simulation/ModelFleet.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

#include "simulation/Marks.h"
#include "simulation/ModelText.h"

namespace valdorn::simulation {

namespace {

std::string escaped(char letter) {
    switch (letter) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '/':
            return "\\/";
        case '\b':
            return "\\b";
        case '\f':
            return "\\f";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(letter);
    if (code >= 0x20)
        return {letter};
    return std::string("\\u00") + digits[code >> 4U] + digits[code & 15U];
}

std::string quoted(const std::string& text) {
    std::string all = "\"";
    for (const char letter : text)
        all += escaped(letter);
    return all + "\"";
}

std::string encodedRecord(const RunnerConfig& record) {
    return "{\"id\":" + quoted(record.id) + ",\"name\":" + quoted(record.name) +
           ",\"instanceURL\":" + quoted(record.instanceURL) +
           ",\"labels\":" + quoted(record.labels) + ",\"extraPath\":" + quoted(record.extraPath) +
           ",\"legacy\":" + (record.legacy ? "true" : "false") + "}";
}

// What somebody has written into the list by hand must not lead out of the folder of all runners,
// nor be that folder.
bool namesOneFolder(const std::string& id) {
    return !id.empty() && id != "." && id != ".." && id.find('/') == std::string::npos;
}

// Version 4, which is the random one, in groups of 8-4-4-4-12 digits.
bool isRandomUuid(const std::string& id) {
    constexpr std::string_view form = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    const auto fits = [](char letter, char place) {
        if (place == 'x')
            return std::string_view("0123456789ABCDEF").find(letter) != std::string_view::npos;
        return place == 'v' ? std::string_view("89AB").find(letter) != std::string_view::npos
                            : letter == place;
    };
    return std::equal(id.begin(), id.end(), form.begin(), form.end(), fits);
}

std::vector<std::size_t> numbersOf(const ModelFleet::Runners& runners) {
    std::vector<std::size_t> numbers;
    for (const auto& runner : runners)
        numbers.push_back(runner->view().number);
    return numbers;
}

}  // namespace

std::string ModelListTexts::encoded(const std::vector<RunnerConfig>& records) {
    std::string all = "[";
    for (const RunnerConfig& record : records)
        all += (all.size() > 1 ? "," : "") + encodedRecord(record);
    return all + "]";
}

std::optional<std::vector<RunnerConfig>> ModelListTexts::meaningOf(const std::string& text) const {
    const auto known = meanings_.find(text);
    return known == meanings_.end() ? std::nullopt : std::optional(known->second);
}

std::string ModelDefaults::text(const std::string& key) const {
    if (const auto set = texts.find(key); set != texts.end())
        return set->second;
    const auto fallback = fallbacks.find(key);
    return fallback == fallbacks.end() ? "" : fallback->second;
}

void ModelDefaults::registerFallbacks(const std::optional<std::string>& computerName) {
    std::string name = ModelText::lowered(computerName.value_or("mac"));
    std::replace(name.begin(), name.end(), ' ', '-');
    fallbacks = {{"instanceURL", ""}, {"runnerName", name}, {"labels", "macos"}, {"extraPath", ""}};
}

ModelFleet::ModelFleet(ModelMachine& machine, ModelListTexts& texts, const ModelDefaults& defaults)
    : machine_(machine), texts_(texts) {
    machine_.disk.makeFolders(ModelDisk::support);
    for (const RunnerConfig& record : load(defaults))
        runners_.push_back(make(record));
    std::set<std::string> ids;
    for (const auto& runner : runners_) {
        if (!ids.insert(runner->view().config.id).second)
            reached<"two runners of one id">();
    }
}

std::vector<RunnerConfig> ModelFleet::load(const ModelDefaults& defaults) {
    const auto text = machine_.disk.readList();
    if (text) {
        const auto meaning = texts_.meaningOf(*text);
        if (meaning && !meaning->empty())
            return reached<"list loaded">(), *meaning;
        if (!meaning)
            reached<"list that means nothing">();
    }
    reached<"settings migrated">();
    RunnerConfig record{"legacy",
                        defaults.text("runnerName"),
                        defaults.text("instanceURL"),
                        defaults.text("labels"),
                        defaults.text("extraPath"),
                        true};
    if (record.name.empty())
        record.name = "runner";
    texts_.teach(ModelListTexts::encoded({record}), {record});
    machine_.disk.writeList(ModelListTexts::encoded({record}));
    return {record};
}

std::shared_ptr<ModelRunner> ModelFleet::make(const RunnerConfig& record) {
    auto runner = std::make_shared<ModelRunner>(machine_, everMade_.size(), record);
    runner->willChange = [this, self = runner.get()] { runnerWillChange(*self); };
    runner->recordWillChange = [this] { save(); };
    everMade_.push_back(runner);
    return runner;
}

void ModelFleet::replaceList(Runners coming) {
    machine_.announcements.push_back(ListView{numbersOf(runners_), std::nullopt});
    machine_.announcements.push_back(ListView{numbersOf(runners_), numbersOf(coming)});
    listWillChange();
    runners_ = std::move(coming);
}

void ModelFleet::save() {
    std::vector<RunnerConfig> records;
    for (const auto& runner : runners_)
        records.push_back(runner->view().config);
    const std::string text = ModelListTexts::encoded(records);
    texts_.teach(text, records);
    machine_.disk.writeList(text);
}

bool ModelFleet::isNewId(const std::string& id) const {
    return isRandomUuid(id) &&
           std::none_of(everMade_.begin(), everMade_.end(), [&](const auto& made) {
               const auto runner = made.lock();
               return runner && runner->view().config.id == id;
           });
}

void ModelFleet::add(const std::string& name, const std::string& id) {
    Runners extended = runners_;
    extended.push_back(make({id, name, "", "macos", "", false}));
    replaceList(std::move(extended));
    save();
}

void ModelFleet::remove(const std::shared_ptr<ModelRunner>& runner) {
    if (runner->isRunning())
        reached<"removed while running">();
    runner->stop();
    const RunnerConfig& record = runner->view().config;
    if (record.legacy)
        reached<"legacy runner removed">();
    else if (!namesOneFolder(record.id))
        reached<"folder kept that is not one runner's own">();
    else
        machine_.disk.removeTree(runner->dataFolder());
    Runners rest = runners_;
    std::erase(rest, runner);
    replaceList(std::move(rest));
    if (runners_.empty())
        reached<"last runner removed">();
    save();
}

void ModelFleet::startAll() {
    for (const auto& runner : Runners(runners_))
        runner->start();
}

void ModelFleet::stopAll() {
    for (const auto& runner : Runners(runners_))
        runner->stop();
}

bool ModelFleet::isAnyRunning() const {
    return std::any_of(runners_.begin(), runners_.end(),
                       [](const auto& runner) { return runner->isRunning(); });
}

RunnerStatus ModelFleet::aggregate() const {
    for (const RunnerStatus status :
         {RunnerStatus::building, RunnerStatus::starting, RunnerStatus::connected,
          RunnerStatus::noNetwork, RunnerStatus::stopped}) {
        for (const auto& runner : runners_) {
            if (runner->view().status == status)
                return status;
        }
    }
    return RunnerStatus::notRegistered;
}

}  // namespace valdorn::simulation
