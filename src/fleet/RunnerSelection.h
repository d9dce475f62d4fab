#pragma once

#include <memory>
#include <optional>
#include <string>

#include "fleet/RunnersStore.h"
#include "platform/Observable.h"

namespace valdorn {

// The runner of the fleet that is looked at and edited, and what adding and removing do to it.
//
// Thread: main thread only. Observers are told before another runner is highlighted; changes of the
// list are the fleet's to announce.
class RunnerSelection : public Observable {
public:
    // The first runner is selected.
    explicit RunnerSelection(std::shared_ptr<RunnersStore> store);

    const std::shared_ptr<RunnersStore>& store() const { return store_; }

    // The id of the runner that the list highlights, if it highlights one. It may be that of a
    // runner which is gone.
    const std::optional<std::string>& selectedID() const VALDORN_ON_MAIN_THREAD {
        return selectedID_.get();
    }
    void select(std::optional<std::string> id) VALDORN_ON_MAIN_THREAD;

    // The runner of that id, else the first one: there is always one to look at.
    const std::shared_ptr<RunnerManager>& selected() const VALDORN_ON_MAIN_THREAD;

    // Adds a runner named "new-runner", and selects it. It is neither registered nor started.
    void add() VALDORN_ON_MAIN_THREAD;

    // The last runner cannot be removed.
    bool canRemove() const VALDORN_ON_MAIN_THREAD;

    // Removes selected(), with its folder, and selects the runner that is first then. Nothing happens
    // where canRemove() says no.
    void removeSelected() VALDORN_ON_MAIN_THREAD;

private:
    const std::shared_ptr<RunnersStore> store_;
    Published<std::optional<std::string>> selectedID_;
};

}  // namespace valdorn
