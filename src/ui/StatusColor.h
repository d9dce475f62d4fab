#pragma once

#include "platform/SystemColor.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

// The colour in which the windows show a runner's status. Pure; any thread.
SystemColor statusColor(RunnerStatus status);

}  // namespace valdorn
