#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/ChildLauncher.h"
#include "support/ScriptedChild.h"

namespace valdorn {

// What a child of run() does.
struct ScriptedRun {
    std::vector<std::string> chunks;
    ChildExit exit;
};

// A launcher without processes: records what it was asked for, fails when told, and hands out
// children that the test plays. One thread only: handlers are called on the thread of the test.
class MemoryChildLauncher : public ChildLauncher {
public:
    ~MemoryChildLauncher() override;

    Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                              ChildHandlers handlers) override;
    Result<ChildExit, LaunchError> run(
        const ChildCommand& command,
        const std::function<void(std::string_view chunk)>& onOutput) override;
    void shutDown() override { isShutDown_ = true; }

    // The child of the index-th launch that succeeded, which must have happened. Stays valid as
    // long as the launcher, whatever happens to the handle.
    ScriptedChild& child(std::size_t index) { return *children_.at(index); }
    std::size_t childCount() const { return children_.size(); }

    // The test's to read: what was asked for, failures included.
    std::vector<ChildCommand> launches;
    std::vector<ChildCommand> runs;

    // The test's to set. A failure for the next launch is used up by it and comes before the
    // lasting one.
    std::optional<LaunchError> failNextLaunch;
    std::optional<LaunchError> failEveryLaunch;

    // One entry is used up by each run(); without one the child prints nothing and exits with 0.
    std::deque<std::variant<ScriptedRun, LaunchError>> runScript;

    // Called inside each run() whose child has started, before its output.
    std::function<void()> duringRun;

private:
    std::optional<LaunchError> nextFailure();

    std::vector<std::shared_ptr<ScriptedChild>> children_;
    bool isShutDown_ = false;
};

}  // namespace valdorn
