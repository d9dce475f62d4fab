#include "failures/Instance.h"

namespace valdorn {

Instance::Instance() {
    if (!place)
        return;
    lock.emplace(InstanceLock::acquire(place.value().lockPath()));
    if (*lock)
        ledger.emplace(files, place.value().ledgerPath());
    if (ledger)
        recorder.emplace(children, *ledger);
}

bool Instance::isHeldByAnother() const {
    return lock && !*lock && lock->error().kind == LockRefusal::Kind::held;
}

ChildLauncher& Instance::launcher() {
    if (recorder)
        return *recorder;
    return children;
}

Services Instance::services() {
    return {queue, background, launcher(), files, defaults, resources, host};
}

void Instance::quit() {
    store->stopAll();
    launcher().shutDown();
    if (ledger)
        ledger->clear();
}

}  // namespace valdorn
