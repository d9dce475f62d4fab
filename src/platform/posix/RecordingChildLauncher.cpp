#include "platform/posix/RecordingChildLauncher.h"

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace valdorn {

namespace {

// One child's way through the ledger. Its end may come before its launch has returned.
class LedgerEntry {
public:
    explicit LedgerEntry(DaemonLedger& ledger) : ledger_(ledger) {}

    void begin(std::int64_t pid) {
        const std::lock_guard lock(mutex_);
        if (!hasEnded_)
            entry_ = ledger_.note(pid);
    }

    void end() {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        if (entry_)
            ledger_.forget(*entry_);
    }

private:
    DaemonLedger& ledger_;
    std::mutex mutex_;
    bool hasEnded_ = false;                     // guarded by mutex_
    std::optional<DaemonLedger::Entry> entry_;  // guarded by mutex_
};

}  // namespace

RecordingChildLauncher::RecordingChildLauncher(ChildLauncher& launcher, DaemonLedger& ledger)
    : launcher_(launcher), ledger_(ledger) {}

Result<std::unique_ptr<ChildProcess>, LaunchError> RecordingChildLauncher::launch(
    const ChildCommand& command, ChildHandlers handlers) {
    const auto entry = std::make_shared<LedgerEntry>(ledger_);
    handlers.onExit = [entry, onExit = std::move(handlers.onExit)](ChildExit exit) {
        entry->end();
        onExit(exit);
    };
    auto launched = launcher_.launch(command, std::move(handlers));
    if (launched)
        entry->begin(launched.value()->id());
    return launched;
}

Result<ChildExit, LaunchError> RecordingChildLauncher::run(
    const ChildCommand& command, const std::function<void(std::string_view chunk)>& onOutput) {
    return launcher_.run(command, onOutput);
}

void RecordingChildLauncher::shutDown() {
    launcher_.shutDown();
}

}  // namespace valdorn
