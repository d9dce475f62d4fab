#include "platform/posix/SpawnedChild.h"

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/DescriptorLimit.h"
#include "platform/posix/SpawnPlan.h"

namespace valdorn {

namespace {

using Step = LaunchError::Step;

LaunchError prepareError(int errorNumber, std::string subject = {}) {
    return {Step::prepare, errorNumber, std::move(subject)};
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

// errno that the kernel gives when it is out of something, whatever we asked it for.
bool isShortage(int errorNumber) {
    return errorNumber == EAGAIN || errorNumber == ENOMEM || errorNumber == EMFILE ||
           errorNumber == ENFILE;
}

// 0, or why the folder cannot be entered.
int entryError(int folder) {
    const bool mayEnter = faccessat(folder, "", X_OK, AT_EACCESS | AT_EMPTY_PATH) == 0;
    return mayEnter ? 0 : errno;
}

Result<Descriptor, LaunchError> openOr(const std::string& path, int flags, Step step) {
    auto opened = openPath(path, flags);
    if (opened)
        return std::move(opened.value());
    return LaunchError{isShortage(opened.error()) ? Step::prepare : step, opened.error(), path};
}

// posix_spawn answers with the errno of whichever of the child's steps failed and does not say
// which. So everything that can fail before exec is done or tried here: the folder is opened, and
// the child enters what was opened rather than looking the path up again. What is left is that the
// right to enter was taken away in between, which asking again tells.
LaunchError spawnError(int errorNumber, const ChildCommand& command, int folder) {
    if (isShortage(errorNumber))
        return prepareError(errorNumber);
    if (const int refused = entryError(folder); refused != 0)
        return {Step::workingFolder, refused, command.workingFolder};
    return {Step::execute, errorNumber, command.executable};
}

void killAndReap(pid_t pid) {
    kill(pid, SIGKILL);
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// The child is not reaped before this, so its number cannot have come to mean a stranger.
Result<SpawnedChild, LaunchError> adopt(pid_t pid, Descriptor output) {
    auto descriptor = PidDescriptor::open(pid);
    if (!descriptor) {
        killAndReap(pid);
        return prepareError(descriptor.error());
    }
    auto process = std::make_shared<PidDescriptor>(pid, std::move(descriptor.value()));
    return SpawnedChild{std::move(process), std::move(output)};
}

// Returns once the child runs its executable: until then it shares our memory and we stand still.
Result<pid_t, LaunchError> spawn(const ChildCommand& command, const SpawnPlan& plan, int folder) {
    const auto arguments = pointersTo(&command.executable, command.arguments);
    const auto environment = pointersTo(nullptr, command.environment);
    pid_t pid = 0;
    const int failed = posix_spawn(&pid, command.executable.c_str(), plan.actions(),
                                   plan.attributes(), arguments.data(), environment.data());
    if (failed != 0)
        return spawnError(failed, command, folder);
    return pid;
}

}  // namespace

Result<SpawnedChild, LaunchError> spawnChild(const ChildCommand& command) {
    const auto folder = openOr(command.workingFolder, O_PATH | O_DIRECTORY, Step::workingFolder);
    if (!folder)
        return folder.error();
    if (const int refused = entryError(folder.value().number()); refused != 0)
        return LaunchError{Step::workingFolder, refused, command.workingFolder};
    const auto input = openOr("/dev/null", O_RDONLY, Step::prepare);
    if (!input)
        return input.error();
    auto pipe = openPipe();
    if (!pipe)
        return prepareError(pipe.error());
    const int writeEnd = pipe.value().writeEnd.number();
    makeRoomForDescriptors(writeEnd);
    const SpawnPlan plan(input.value().number(), writeEnd, folder.value().number());
    if (plan.error() != 0)
        return prepareError(plan.error());
    const auto pid = spawn(command, plan, folder.value().number());
    if (!pid)
        return pid.error();
    return adopt(pid.value(), std::move(pipe.value().readEnd));
}

void abandon(const PidDescriptor& process) {
    killAndReap(process.pid());
}

}  // namespace valdorn
