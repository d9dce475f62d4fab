#include "platform/posix/SpawnedChild.h"

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/DescriptorLimit.h"
#include "platform/posix/Shortage.h"
#include "platform/posix/SpawnProcess.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

using Step = LaunchError::Step;

LaunchError prepareError(int errorNumber) {
    return {Step::prepare, errorNumber, {}};
}

// The pointers that exec wants. They borrow the texts.
std::vector<char*> pointersTo(const std::string* first, const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 2);
    // exec takes the texts as writable for historical reasons and never writes to them.
    if (first)
        pointers.push_back(const_cast<char*>(first->c_str()));
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

LaunchError launchError(const SpawnFailure& failure, const ChildCommand& command) {
    if (failure.step == SpawnFailure::Step::create || isShortage(failure.errorNumber))
        return prepareError(failure.errorNumber);
    if (failure.step == SpawnFailure::Step::enterFolder)
        return {Step::workingFolder, failure.errorNumber, command.workingFolder};
    return {Step::execute, failure.errorNumber, command.executable};
}

void killAndReap(pid_t pid) {
    // One that has taken another user's rights meanwhile cannot be killed, and is not waited for.
    if (kill(pid, SIGKILL) == 0)
        uninterrupted([pid] { return waitpid(pid, nullptr, 0); });
}

}  // namespace

Result<SpawnedChild, LaunchError> spawnChild(const ChildCommand& command, const Descriptor& input,
                                             const ChildSettings& settings) {
    auto pipe = openPipe();
    if (!pipe)
        return prepareError(pipe.error());
    const int writeEnd = pipe.value().writeEnd.number();
    makeRoomForDescriptors(writeEnd);
    const auto arguments = pointersTo(&command.executable, command.arguments);
    const auto environment = pointersTo(nullptr, command.environment);
    auto spawned = spawnProcess({
        .executable = command.executable.c_str(),
        .arguments = arguments.data(),
        .environment = environment.data(),
        .folder = command.workingFolder.c_str(),
        .input = input.number(),
        .output = writeEnd,
        .coreDumpLimit = settings.coreDumpLimit ? &*settings.coreDumpLimit : nullptr,
        .birthNote = settings.birthNote ? &*settings.birthNote : nullptr,
    });
    if (!spawned)
        return launchError(spawned.error(), command);
    auto& [pid, descriptor] = spawned.value();
    auto process = std::make_shared<PidDescriptor>(pid, std::move(descriptor));
    return SpawnedChild{std::move(process), std::move(pipe.value().readEnd)};
}

void abandon(const PidDescriptor& process) {
    killAndReap(process.pid());
}

}  // namespace valdorn
