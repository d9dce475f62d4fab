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
        if (hasEnded_)
            ledger_.noteNobody();
        else
            entry_ = ledger_.note(pid);
    }

    void noteAsked() {
        const std::lock_guard lock(mutex_);
        if (entry_)
            ledger_.noteAsked(*entry_);
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

class RecordedChild : public ChildProcess {
public:
    RecordedChild(std::unique_ptr<ChildProcess> child, std::shared_ptr<LedgerEntry> entry)
        : child_(std::move(child)), entry_(std::move(entry)) {}

    std::int64_t id() const override { return child_->id(); }
    bool isRunning() const override { return child_->isRunning(); }
    void terminate() override {
        child_->terminate();
        entry_->noteAsked();
    }

private:
    const std::unique_ptr<ChildProcess> child_;
    const std::shared_ptr<LedgerEntry> entry_;
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
    ledger_.expectBirth();
    auto launched = launcher_.launch(command, std::move(handlers));
    if (!launched) {
        ledger_.noteNobody();
        return launched.error();
    }
    entry->begin(launched.value()->id());
    return std::unique_ptr<ChildProcess>(
        std::make_unique<RecordedChild>(std::move(launched.value()), entry));
}

Result<ChildExit, LaunchError> RecordingChildLauncher::run(
    const ChildCommand& command, const std::function<void(std::string_view chunk)>& onOutput) {
    return launcher_.run(command, onOutput);
}

void RecordingChildLauncher::shutDown() {
    launcher_.shutDown();
}

}  // namespace valdorn
