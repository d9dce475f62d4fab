#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/ModelFleet.h"
#include "simulation/ModelForm.h"
#include "simulation/ModelLog.h"
#include "simulation/ModelMachine.h"
#include "simulation/ModelShell.h"
#include "simulation/ModelTray.h"
#include "simulation/ModelUpdates.h"

namespace valdorn::simulation {

// How many registration forms there are: two, so that their tools can end in any order.
inline constexpr std::size_t formCount = 2;

// The login item by the rules.
struct ModelLoginItem {
    bool isEnabled = false;
    std::optional<std::string> refusal;
    int registrations = 0;
    int unregistrations = 0;
    std::vector<std::string> log;

    void set(bool enabled);

private:
    void attempt(bool enabled, int& attempts);
};

// The runner that is looked at, by the rules.
class ModelSelection {
public:
    ModelSelection(ModelFleet& fleet, Announcements& announcements);

    const std::optional<std::string>& id() const { return id_; }
    // Announced when it is another one.
    void select(const std::optional<std::string>& id);

    const std::shared_ptr<ModelRunner>& selected() const;
    bool canRemove() const { return fleet_.runners().size() >= 2; }
    void add(const std::string& newId);
    void removeSelected();

private:
    ModelFleet& fleet_;
    Announcements& announcements_;
    std::optional<std::string> id_;
};

// One run of the program, as the model expects it.
struct ModelProcess {
    ModelProcess(ModelDisk& disk, ModelDefaults& defaults)
        : machine(disk), shell(machine.loop, defaults) {}

    ModelMachine machine;
    std::unique_ptr<ModelFleet> fleet;
    ModelShell shell;
    std::unique_ptr<ModelSelection> selection;
    std::unique_ptr<ModelLog> log;  // from the first opening of its window on
    std::array<std::unique_ptr<ModelForm>, formCount> forms;
    std::vector<std::function<void(const ToolScript&)>> background;  // waiting runs of the tool
    ModelUpdates updates{machine.loop, machine.announcements};
    ModelTraySearch search{machine.loop};
    ModelGate gate{machine.loop};
};

// The whole of what is expected: a computer, and the program that runs on it.
class Model {
public:
    Model();

    ModelDisk disk;
    ModelDefaults defaults;
    ModelListTexts texts;
    ModelLoginItem loginItem;
    std::vector<std::string> environment;
    std::optional<std::string> computerName;
    std::optional<std::string> bundledRunner;

    ModelProcess& process() { return *process_; }

    // Begins the program anew, up to its launch.
    void begin();
    // The program is gone, with all it had in memory.
    void end() { process_.reset(); }

private:
    std::unique_ptr<ModelProcess> process_;
};

}  // namespace valdorn::simulation
