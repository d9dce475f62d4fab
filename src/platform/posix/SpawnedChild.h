#pragma once

#include <memory>

#include "platform/ChildLauncher.h"
#include "platform/posix/ChildSettings.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PidDescriptor.h"

namespace valdorn {

// A child that runs its executable, and the end of the pipe that its output comes from. Dropping
// it closes that end; it neither signals the child nor reaps it.
struct SpawnedChild {
    std::shared_ptr<PidDescriptor> process;
    Descriptor output;  // never blocks
};

// Any thread. Starts a child under the conditions that ChildLauncher promises, with `input` as its
// standard input. Each failure leaves neither a child nor a descriptor behind.
Result<SpawnedChild, LaunchError> spawnChild(const ChildCommand& command, const Descriptor& input,
                                             const ChildSettings& settings = {});

// Kills and reaps a child that nobody has heard of yet, because something that it needs could not
// be had. One that has taken another user's rights meanwhile goes on by itself. A child that somebody
// knows of is never killed.
void abandon(const PidDescriptor& process);

}  // namespace valdorn
