#include "support/MemoryChildLauncher.h"

#include <utility>

namespace valdorn {

namespace {

constexpr std::int64_t firstId = 1000;

class MemoryChildProcess : public ChildProcess {
public:
    explicit MemoryChildProcess(std::shared_ptr<ScriptedChild> child) : child_(std::move(child)) {}

    std::int64_t id() const override { return child_->id(); }
    bool isRunning() const override { return child_->isRunning(); }
    void terminate() override { child_->noteTerminate(); }

private:
    const std::shared_ptr<ScriptedChild> child_;
};

LaunchError interrupted() {
    return {LaunchError::Step::interrupted, 0, {}};
}

}  // namespace

MemoryChildLauncher::~MemoryChildLauncher() {
    for (const auto& child : children_)
        child->detach();
}

Result<std::unique_ptr<ChildProcess>, LaunchError> MemoryChildLauncher::launch(
    const ChildCommand& command, ChildHandlers handlers) {
    launches.push_back(command);
    if (isShutDown_)
        return interrupted();
    if (auto failure = nextFailure())
        return *failure;
    const auto id = firstId + static_cast<std::int64_t>(children_.size());
    children_.push_back(std::make_shared<ScriptedChild>(id, std::move(handlers)));
    return std::unique_ptr<ChildProcess>(std::make_unique<MemoryChildProcess>(children_.back()));
}

Result<ChildExit, LaunchError> MemoryChildLauncher::run(
    const ChildCommand& command, const std::function<void(std::string_view chunk)>& onOutput) {
    runs.push_back(command);
    if (isShutDown_)
        return interrupted();
    std::variant<ScriptedRun, LaunchError> script;
    if (!runScript.empty()) {
        script = std::move(runScript.front());
        runScript.pop_front();
    }
    if (const auto* failure = std::get_if<LaunchError>(&script))
        return *failure;
    if (duringRun)
        duringRun();
    const auto& scripted = std::get<ScriptedRun>(script);
    for (std::size_t next = 0; next < scripted.chunks.size() && !isShutDown_; ++next)
        onOutput(scripted.chunks[next]);
    if (isShutDown_)
        return interrupted();
    return scripted.exit;
}

std::optional<LaunchError> MemoryChildLauncher::nextFailure() {
    if (failNextLaunch)
        return std::exchange(failNextLaunch, std::nullopt);
    return failEveryLaunch;
}

}  // namespace valdorn
