#include "fleet/RunnerSelection.h"

#include <algorithm>
#include <utility>

namespace valdorn {

RunnerSelection::RunnerSelection(std::shared_ptr<RunnersStore> store)
    : store_(std::move(store)), selectedID_(*this, store_->first()->id()) {}

void RunnerSelection::select(std::optional<std::string> id) {
    if (id != selectedID())
        selectedID_.set(std::move(id));
}

const std::shared_ptr<RunnerManager>& RunnerSelection::selected() const {
    const RunnersStore::Runners& runners = store_->runners();
    const auto found = std::find_if(
        runners.begin(), runners.end(),
        [this](const auto& runner) VALDORN_ON_MAIN_THREAD { return runner->id() == selectedID(); });
    return found != runners.end() ? *found : store_->first();
}

void RunnerSelection::add() {
    select(store_->add("new-runner")->id());
}

bool RunnerSelection::canRemove() const {
    return store_->runners().size() >= 2;
}

void RunnerSelection::removeSelected() {
    // A second click may come before the button knows.
    if (!canRemove())
        return;
    store_->remove(selected());
    select(store_->first()->id());
}

}  // namespace valdorn
