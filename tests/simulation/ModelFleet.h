#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/ModelMachine.h"
#include "simulation/ModelRunner.h"

namespace valdorn::simulation {

// What the texts of "runners.json" mean that the simulation has seen: what was written, and what the
// steps have planted. All others mean nothing, so that the model needs no reader of JSON.
class ModelListTexts {
public:
    // The records as the list's file holds them.
    static std::string encoded(const std::vector<RunnerConfig>& records);

    // That text means these records.
    void teach(const std::string& text, const std::vector<RunnerConfig>& records) {
        meanings_[text] = records;
    }
    std::optional<std::vector<RunnerConfig>> meaningOf(const std::string& text) const;

private:
    std::map<std::string, std::vector<RunnerConfig>> meanings_;
};

// The user's settings that concern the fleet and the menu.
struct ModelDefaults {
    std::map<std::string, std::string> texts;
    std::map<std::string, std::string> fallbacks;
    bool hasConnected = false;

    std::string text(const std::string& key) const;
    void registerFallbacks(const std::optional<std::string>& computerName);
};

// The list of runners and its file by the rules.
class ModelFleet {
public:
    using Runners = std::vector<std::shared_ptr<ModelRunner>>;

    // Loads or migrates.
    ModelFleet(ModelMachine& machine, ModelListTexts& texts, const ModelDefaults& defaults);

    // Called before each change of the list, and before each change of a runner's field.
    std::function<void()> listWillChange = [] {};
    std::function<void(const ModelRunner&)> runnerWillChange = [](const ModelRunner&) {};

    const Runners& runners() const { return runners_; }
    // Every runner ever made, by number; the ones that are gone have expired.
    const std::vector<std::weak_ptr<ModelRunner>>& everMade() const { return everMade_; }

    // Whether a new runner may be given that id: a random UUID in capitals that no other has.
    bool isNewId(const std::string& id) const;
    void add(const std::string& name, const std::string& id);
    void remove(const std::shared_ptr<ModelRunner>& runner);
    void startAll();
    void stopAll();
    bool isAnyRunning() const;
    RunnerStatus aggregate() const;

private:
    std::vector<RunnerConfig> load(const ModelDefaults& defaults);
    std::shared_ptr<ModelRunner> make(const RunnerConfig& record);
    void replaceList(Runners coming);
    void save();

    ModelMachine& machine_;
    ModelListTexts& texts_;
    Runners runners_;
    std::vector<std::weak_ptr<ModelRunner>> everMade_;
};

}  // namespace valdorn::simulation
