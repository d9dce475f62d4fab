#include "posix/PosixStage.h"

#include <utility>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include "platform/posix/PidDescriptor.h"

namespace valdorn {

namespace {

constexpr int patienceMilliseconds = 60'000;

std::string argument(const ChildStep& step) {
    switch (step.kind) {
        case ChildStep::Kind::print:
            return "print:" + step.text;
        case ChildStep::Kind::fill:
            return "fill:" + std::to_string(step.number);
        case ChildStep::Kind::await:
            return "await";
        case ChildStep::Kind::exit:
            return "exit:" + std::to_string(step.number);
        case ChildStep::Kind::raise:
            return "raise:" + std::to_string(step.number);
    }
    return {};
}

ChildCommand commandFor(const ChildPlay& play) {
    std::vector<std::string> arguments;
    for (const ChildStep& step : play)
        arguments.push_back(argument(step));
    return childCommand("play", std::move(arguments));
}

}  // namespace

std::string childPath(const std::string& name) {
    return std::string(VALDORN_TEST_CHILDREN) + "/" + name;
}

ChildCommand childCommand(const std::string& name, std::vector<std::string> arguments) {
    return {childPath(name), std::move(arguments), "/", {}};
}

bool waitForEndOf(std::int64_t id) {
    const auto descriptor = PidDescriptor::open(static_cast<pid_t>(id));
    if (!descriptor)
        return true;
    pollfd ended{descriptor.value().number(), POLLIN, 0};
    return poll(&ended, 1, patienceMilliseconds) > 0;
}

bool isGone(std::int64_t id) {
    return access(("/proc/" + std::to_string(id)).c_str(), F_OK) != 0;
}

Result<std::unique_ptr<ChildProcess>, LaunchError> PosixStage::launch(const ChildPlay& play,
                                                                      ChildHandlers handlers) {
    return launcher_->launch(commandFor(play), std::move(handlers));
}

Result<ChildExit, LaunchError> PosixStage::run(
    const ChildPlay& play, const std::function<void(std::string_view)>& onOutput) {
    return launcher_->run(commandFor(play), onOutput);
}

Result<std::unique_ptr<ChildProcess>, LaunchError> PosixStage::launchNothing(
    ChildHandlers handlers) {
    return launcher_->launch(childCommand("no_such_child"), std::move(handlers));
}

void PosixStage::nudge(std::int64_t id) {
    kill(static_cast<pid_t>(id), SIGUSR1);
}

bool PosixStage::waitForEnd(ChildProcess& process) {
    return waitForEndOf(process.id()) && !process.isRunning();
}

}  // namespace valdorn
