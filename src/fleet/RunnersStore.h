#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Observable.h"
#include "platform/Services.h"
#include "runner/RunnerConfig.h"
#include "runner/RunnerManager.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

// The fleet: the ordered list of supervised runners and the file that remembers it.
//
// Thread: main thread only; nothing waits for a child. Observers are told of changes of the list
// (not of the runners in it) before they are stored.
// File: "runners.json" in the application-support folder, rewritten in place after each add() and
// remove() and on each change of a record. A record announces its change before it stores it, and
// the file is written from what the records hold then: an edit reaches the disk with the save
// after its own. Every failure of the file or of a folder is ignored; the list in memory stands,
// and the next save tries again.
class RunnersStore : public Observable, public std::enable_shared_from_this<RunnersStore> {
    struct Key {};

public:
    using Runners = std::vector<std::shared_ptr<RunnerManager>>;

    // The process's one fleet, made by the first call and never destroyed; later calls ignore the
    // argument. For the composition root only. What `services` refers to is never destroyed
    // before the process ends, or is not used after the event loop has returned.
    static RunnersStore& shared(const Services& services) VALDORN_ON_MAIN_THREAD;

    // Makes the support folder, then reads the list, or, where the file gives no record, migrates
    // the one-runner settings into it. Never empty; starts nothing.
    static std::shared_ptr<RunnersStore> create(const Services& services) VALDORN_ON_MAIN_THREAD;

    RunnersStore(Key, const Services& services);
    RunnersStore(const RunnersStore&) = delete;
    RunnersStore& operator=(const RunnersStore&) = delete;

    // The fleet in the order of the file.
    const Runners& runners() const VALDORN_ON_MAIN_THREAD { return runners_.get(); }
    // The first runner of the list. There always is one while the program runs; a list without any
    // is our own mistake and ends it.
    const std::shared_ptr<RunnerManager>& first() const VALDORN_ON_MAIN_THREAD;
    // Calls `observer` with the coming list before each change of it.
    [[nodiscard]] Subscription onRunnersWillSet(std::function<void(const Runners&)> observer)
        VALDORN_ON_MAIN_THREAD {
        return runners_.onWillSet(std::move(observer));
    }

    // Appends a new runner with that name, as it is, and saves. It is neither registered nor
    // started.
    std::shared_ptr<RunnerManager> add(const std::string& name) VALDORN_ON_MAIN_THREAD;

    // Stops the runner, deletes its folder with all it holds (a legacy runner's folder is the
    // support folder and stays), takes this very object off the list, and saves. A runner that is
    // not on the list is treated the same. Does not refuse to remove the last one. The argument may
    // be a reference into the list.
    void remove(const std::shared_ptr<RunnerManager>& runner) VALDORN_ON_MAIN_THREAD;

    // Starts each runner in list order; the ones that are not registered show so.
    void startAllRegistered() VALDORN_ON_MAIN_THREAD;

    // Asks each runner in list order to stop.
    void stopAll() VALDORN_ON_MAIN_THREAD;

    // The one status of the fleet: the first of building, starting, connected, noNetwork and
    // stopped that any runner has, else notRegistered.
    RunnerStatus aggregateStatus() const VALDORN_ON_MAIN_THREAD;

private:
    void load() VALDORN_ON_MAIN_THREAD;
    std::vector<RunnerConfig> loadOrMigrate() VALDORN_ON_MAIN_THREAD;
    RunnerConfig migratedRecord() const VALDORN_ON_MAIN_THREAD;
    void observe(RunnerManager& runner) VALDORN_ON_MAIN_THREAD;
    void deleteDataFolder(const RunnerManager& runner) VALDORN_ON_MAIN_THREAD;
    void save() VALDORN_ON_MAIN_THREAD;
    void write(const std::vector<RunnerConfig>& records) VALDORN_ON_MAIN_THREAD;

    const Services services_;
    const std::string folder_;  // the application-support folder
    Published<Runners> runners_;
    std::vector<Subscription> cancellables_ VALDORN_MAIN_THREAD_ONLY;
};

}  // namespace valdorn
