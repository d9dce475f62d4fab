#pragma once

#include "platform/Result.h"
#include "platform/posix/InstanceLock.h"
#include "platform/posix/InstancePlace.h"
#include "program/Ground.h"

namespace valdorn::SecondStart {

using Lock = Result<InstanceLock, LockRefusal>;

// Whether another instance serves the home.
bool isHeldByAnother(const Lock& lock);

// For a start that found the lock held: asks the running instance to show its status window and
// hands the activation token on. True when it was reached. The first instance may be ending just
// now: then `lock` is ours afterwards. Otherwise the starter's notification, if it waits for one,
// is completed here. Main thread, before there is an application object; blocks for some seconds
// at most, whatever becomes of the bus meanwhile.
bool activateRunningInstance(const Ground& ground, const InstancePlace& place, Lock& lock,
                             char* programName);

}  // namespace valdorn::SecondStart
