#include "fleet/RunnerSelection.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace valdorn {

RunnerSelection::RunnerSelection(std::shared_ptr<RunnersStore> store)
    : store_(std::move(store)), selectedID_(*this, first()->id()) {}

const std::shared_ptr<RunnerManager>& RunnerSelection::first() const {
    if (store_->runners().empty())
        std::abort();  // our own mistake: the last runner is never removed
    return store_->runners().front();
}

void RunnerSelection::select(std::optional<std::string> id) {
    if (id != selectedID())
        selectedID_.set(std::move(id));
}

const std::shared_ptr<RunnerManager>& RunnerSelection::selected() const {
    const RunnersStore::Runners& runners = store_->runners();
    const auto found = std::find_if(
        runners.begin(), runners.end(),
        [this](const auto& runner) VALDORN_ON_MAIN_THREAD { return runner->id() == selectedID(); });
    return found != runners.end() ? *found : first();
}

void RunnerSelection::add() {
    select(store_->add("new-runner")->id());
}

bool RunnerSelection::canRemove() const {
    return store_->runners().size() >= 2;
}

void RunnerSelection::removeSelected() {
    store_->remove(selected());
    select(first()->id());
}

}  // namespace valdorn
