#include "platform/posix/PosixChildLauncher.h"

#include <system_error>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <sys/eventfd.h>

#include "platform/posix/ForegroundRun.h"
#include "platform/posix/KernelCall.h"
#include "platform/posix/SpawnedChild.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

class PosixChildProcess : public ChildProcess {
public:
    explicit PosixChildProcess(std::shared_ptr<PidDescriptor> process)
        : process_(std::move(process)) {}

    std::int64_t id() const override { return process_->pid(); }
    bool isRunning() const override { return process_->isRunning(); }
    // A child that has ended, or has taken another user's rights, is left alone.
    void terminate() override { process_->send(SIGTERM); }

private:
    const std::shared_ptr<PidDescriptor> process_;
};

void heedEndsOfChildren() {
    struct sigaction action {};
    sigaction(SIGCHLD, nullptr, &action);
    if (action.sa_handler != SIG_IGN)
        return;
    action.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &action, nullptr);
}

Descriptor openNull() {
    auto opened = openPath("/dev/null", O_RDONLY);
    if (!opened)
        throw std::system_error(opened.error(), std::generic_category(), "/dev/null");
    return std::move(opened.value());
}

LaunchError quitting() {
    return {LaunchError::Step::interrupted, 0, {}};
}

// For a child that nobody listens to: its pipe is emptied so that it can go on, and it is reaped.
ChildHandlers nobody() {
    return {[](std::string_view, const OutputCredit&) {}, [](ChildExit) {}};
}

}  // namespace

PosixChildLauncher::PosixChildLauncher(ChildSettings settings)
    : settings_(std::move(settings)),
      null_(openNull()),
      quitting_(orThrow(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
    heedEndsOfChildren();
}

PosixChildLauncher::~PosixChildLauncher() = default;

Result<std::unique_ptr<ChildProcess>, LaunchError> PosixChildLauncher::launch(
    const ChildCommand& command, ChildHandlers handlers) {
    if (isQuitting_)
        return quitting();
    auto child = spawnChild(command, null_, settings_);
    if (!child)
        return child.error();
    auto process = child.value().process;
    if (const auto why = reader_.watch(std::move(child.value()), std::move(handlers))) {
        abandon(*process);
        return LaunchError{LaunchError::Step::prepare, *why, {}};
    }
    return std::unique_ptr<ChildProcess>(std::make_unique<PosixChildProcess>(std::move(process)));
}

Result<ChildExit, LaunchError> PosixChildLauncher::run(
    const ChildCommand& command, const std::function<void(std::string_view chunk)>& onOutput) {
    if (isQuitting_)
        return quitting();
    auto child = spawnChild(command, null_, {settings_.coreDumpLimit, std::nullopt});
    if (!child)
        return child.error();
    auto outcome = ForegroundRun(child.value(), quitting_, onOutput).wait();
    if (!outcome) {
        // It may have ended by itself just now; then there is nobody to ask.
        std::ignore = child.value().process->send(SIGTERM);
        // Failing to watch it costs only its remaining output, and a zombie until the program ends.
        reader_.watch(std::move(child.value()), nobody());
    }
    return outcome;
}

void PosixChildLauncher::shutDown() {
    isQuitting_ = true;
    // Refused only when it is full, and so readable.
    std::ignore = uninterrupted([this] { return eventfd_write(quitting_.number(), 1); });
}

}  // namespace valdorn
