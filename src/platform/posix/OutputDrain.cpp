#include "platform/posix/OutputDrain.h"

#include <array>
#include <string>
#include <tuple>

#include <fcntl.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/SpawnProcess.h"

namespace valdorn {

void leaveToDrain(int output) {
    const auto nowhere = openPath("/dev/null", O_WRONLY);
    // cat takes a read that would block for an error.
    if (!nowhere || fcntl(output, F_SETFL, 0) != 0)
        return;
    std::string name = "/bin/cat";
    const std::array<char*, 2> arguments{name.data(), nullptr};
    const std::array<char*, 1> environment{nullptr};
    // Reaped by whoever is our children's parent once we are gone. If it cannot be had, nothing is
    // left to be done: we are quitting, nobody is there to be told, and the runner ends at its next
    // line as it would without us.
    std::ignore = spawnProcess({
        .executable = name.c_str(),
        .arguments = arguments.data(),
        .environment = environment.data(),
        .folder = "/",
        .input = output,
        .output = nowhere.value().number(),
    });
}

}  // namespace valdorn
