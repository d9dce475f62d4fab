#include "platform/posix/OutputDrain.h"

#include <array>
#include <string>

#include <fcntl.h>
#include <spawn.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/SpawnPlan.h"

namespace valdorn {

void leaveToDrain(int output) {
    const auto nowhere = openPath("/dev/null", O_WRONLY);
    const auto folder = openPath("/", O_PATH | O_DIRECTORY);
    // cat takes a read that would block for an error.
    if (!nowhere || !folder || fcntl(output, F_SETFL, 0) != 0)
        return;
    const SpawnPlan plan(output, nowhere.value().number(), folder.value().number());
    if (plan.error() != 0)
        return;
    std::string name = "cat";
    const std::array<char*, 2> arguments{name.data(), nullptr};
    const std::array<char*, 1> environment{nullptr};
    pid_t pid = 0;
    // Reaped by whoever is our children's parent once we are gone.
    posix_spawn(&pid, "/bin/cat", plan.actions(), plan.attributes(), arguments.data(),
                environment.data());
}

}  // namespace valdorn
