#pragma once

#include <atomic>

#include "platform/ChildLauncher.h"
#include "platform/posix/ChildReader.h"
#include "platform/posix/ChildSettings.h"
#include "platform/posix/Descriptor.h"

namespace valdorn {

// Starts processes of this computer. Each child costs two descriptors while it runs; the soft
// limit on descriptors is raised when a fleet comes near it.
//
// For each child that lives on after the destruction a small process is left behind that reads its
// output (see OutputDrain.h). Both are reaped by whoever is their parent then, so the launcher is to
// live as long as the program.
class PosixChildLauncher : public ChildLauncher {
public:
    // Throws std::system_error when the kernel gives no descriptor, null or thread. Takes back an
    // ignored SIGCHLD, which a program inherits from the one that started it: with it the kernel
    // would throw the exits of children away. Only children of launch() write down their birth.
    explicit PosixChildLauncher(ChildSettings settings = {});
    ~PosixChildLauncher() override;

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override;
    // No run() may be under way on another thread when the launcher is destroyed.
    Result<ChildExit, LaunchError> run(
        const ChildCommand& command,
        const std::function<void(std::string_view chunk)>& onOutput) override;
    void shutDown() override;

private:
    const ChildSettings settings_;
    const Descriptor null_;  // every child's input; there is nothing in it that one could take
    // Set before quitting_; to look at it cannot fail, as a poll may.
    std::atomic<bool> isQuitting_ = false;
    const Descriptor quitting_;  // an eventfd, readable for ever once we shut down
    ChildReader reader_;
};

}  // namespace valdorn
