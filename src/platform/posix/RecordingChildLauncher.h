#pragma once

#include "platform/ChildLauncher.h"
#include "platform/posix/DaemonLedger.h"

namespace valdorn {

// Notes in a ledger each child that another launcher launches, until it has ended. Runs in the
// foreground are not noted: they are over when the program is. Borrows both; the ledger outlives
// the other launcher, whose thread forgets the children. launch(): one thread at a time, as all
// children write their births into one file.
class RecordingChildLauncher : public ChildLauncher {
public:
    RecordingChildLauncher(ChildLauncher& launcher, DaemonLedger& ledger);

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override;
    Result<ChildExit, LaunchError> run(
        const ChildCommand& command,
        const std::function<void(std::string_view chunk)>& onOutput) override;
    void shutDown() override;

private:
    ChildLauncher& launcher_;
    DaemonLedger& ledger_;
};

}  // namespace valdorn
