#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "contracts/ChildLauncherContract.h"
#include "platform/ChildLauncher.h"
#include "platform/posix/PosixChildLauncher.h"

namespace valdorn {

// Path of one of the tests' own children.
std::string childPath(const std::string& name);

// A command that runs it in the root folder without any environment.
ChildCommand childCommand(const std::string& name, std::vector<std::string> arguments = {});

// Waits for the end of any process; false when it has not come after a generous time.
bool waitForEndOf(std::int64_t id);

// True when the kernel knows no process of that id, not even a zombie.
bool isGone(std::int64_t id);

// Plays real children.
class PosixStage {
public:
    ChildLauncher& launcher() { return *launcher_; }
    void destroyLauncher() { launcher_.reset(); }

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildPlay& play,
                                                              ChildHandlers handlers);
    Result<ChildExit, LaunchError> run(const ChildPlay& play,
                                       const std::function<void(std::string_view)>& onOutput);
    Result<std::unique_ptr<ChildProcess>, LaunchError> launchNothing(ChildHandlers handlers);
    void nudge(std::int64_t id);
    bool waitForEnd(ChildProcess& process);

private:
    std::unique_ptr<PosixChildLauncher> launcher_ = std::make_unique<PosixChildLauncher>();
};

}  // namespace valdorn
