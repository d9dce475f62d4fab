#include "simulation/Model.h"

#include <algorithm>

#include "simulation/Marks.h"

namespace valdorn::simulation {

void ModelLoginItem::set(bool enabled) {
    if (enabled)
        attempt(true, registrations);
    else if (isEnabled)
        attempt(false, unregistrations);
    else
        reached<"login item is off already">();
}

void ModelLoginItem::attempt(bool enabled, int& attempts) {
    ++attempts;
    if (!refusal) {
        isEnabled = enabled;
        return;
    }
    reached<"login item refused">();
    log.push_back("Valdorn: login-item toggle failed: " + *refusal);
}

ModelSelection::ModelSelection(ModelFleet& fleet, Announcements& announcements)
    : fleet_(fleet),
      announcements_(announcements),
      id_(fleet.runners().front()->view().config.id) {}

void ModelSelection::select(const std::optional<std::string>& id) {
    if (id == id_)
        return reached<"selected already">();
    announcements_.push_back(SelectionView{id_});
    id_ = id;
}

const std::shared_ptr<ModelRunner>& ModelSelection::selected() const {
    const auto& runners = fleet_.runners();
    const auto found = std::find_if(runners.begin(), runners.end(), [this](const auto& runner) {
        return runner->view().config.id == id_;
    });
    if (found == runners.end())
        reached<"nothing is selected">();
    return found == runners.end() ? runners.front() : *found;
}

void ModelSelection::add(const std::string& newId) {
    fleet_.add("new-runner", newId);
    select(newId);
}

void ModelSelection::removeSelected() {
    if (!canRemove())
        return;
    fleet_.remove(std::shared_ptr(selected()));
    select(fleet_.runners().front()->view().config.id);
}

Model::Model() {
    disk.plantFolder("/home/ada");
}

void Model::begin() {
    process_ = std::make_unique<ModelProcess>(disk, defaults);
    ModelProcess& process = *process_;
    process.machine.environment = environment;
    process.machine.bundledRunner = bundledRunner;
    defaults.registerFallbacks(computerName);
    process.shell.launch([&]() -> ModelFleet& {
        process.fleet = std::make_unique<ModelFleet>(process.machine, texts, defaults);
        return *process.fleet;
    });
    process.selection =
        std::make_unique<ModelSelection>(*process.fleet, process.machine.announcements);
    for (std::size_t number = 0; number < formCount; ++number)
        process.forms[number] = std::make_unique<ModelForm>(process.machine, number);
}

}  // namespace valdorn::simulation
