#pragma once

#include <memory>
#include <optional>
#include <string>

#include "fleet/RunnersStore.h"
#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/DaemonLedger.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/InstanceLock.h"
#include "platform/posix/InstancePlace.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/PosixSystemLog.h"
#include "platform/posix/RecordingChildLauncher.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "runner/RegistrationForm.h"
#include "support/AwaitedQueue.h"
#include "support/MemoryUserDefaults.h"

namespace valdorn {

// The program but for its windows: the real services, wired as the program wires them. Throws
// std::system_error where the program could not go on.
class Instance {
public:
    // Where $HOME and $XDG_RUNTIME_DIR say.
    Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    ~Instance() = default;

    void load() { store = RunnersStore::create(services()); }

    // As the program does when it is asked to.
    void quit();

    bool isHeldByAnother() const;

    PosixFileSystem files;
    PosixHostInfo host;
    std::string executable = executablePath();
    AutostartRegistry loginItems{files, host, executable};
    PosixSystemLog log;
    Result<InstancePlace, PlaceRefusal> place =
        InstancePlace::forHome(host.environment(), host.homeFolder());
    std::optional<Result<InstanceLock, LockRefusal>> lock;
    AwaitedQueue queue;
    std::optional<DaemonLedger> ledger;
    PosixChildLauncher children;
    std::optional<RecordingChildLauncher> recorder;
    ThreadBackgroundQueue background;
    MemoryUserDefaults defaults;
    InstalledResources resources{executable};
    std::shared_ptr<RegistrationForm> form = RegistrationForm::create(queue, background);
    std::shared_ptr<RunnersStore> store;

private:
    ChildLauncher& launcher();
    Services services();
};

}  // namespace valdorn
