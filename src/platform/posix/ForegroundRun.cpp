#include "platform/posix/ForegroundRun.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

#include "platform/posix/Uninterrupted.h"

namespace valdorn {

ForegroundRun::ForegroundRun(SpawnedChild& child, const Descriptor& interrupt,
                             const OnOutput& onOutput)
    : child_(child), interrupt_(interrupt), onOutput_(onOutput), buffer_(maxChunkBytes) {}

Result<ChildExit, LaunchError> ForegroundRun::wait() {
    const LaunchError interrupted{LaunchError::Step::interrupted, 0, {}};
    while (child_.output) {
        if (!isReadable(child_.output.number()))
            return interrupted;
        if (!readOnce())
            child_.output.reset();
    }
    while (isReadable(child_.process->number())) {
        if (const auto exit = child_.process->reap())
            return *exit;
    }
    return interrupted;
}

// Waits. False when the waiting is to end instead, which comes first when both are so.
bool ForegroundRun::isReadable(int number) {
    std::array<pollfd, 2> waits{{{interrupt_.number(), POLLIN, 0}, {number, POLLIN, 0}}};
    uninterrupted([&waits] { return poll(waits.data(), waits.size(), -1); });
    return waits[0].revents == 0;
}

// False at the end of the output.
bool ForegroundRun::readOnce() {
    const ssize_t got = read(child_.output.number(), buffer_.data(), buffer_.size());
    if (got > 0)
        onOutput_({buffer_.data(), static_cast<std::size_t>(got)});
    return got > 0 || (got < 0 && (errno == EINTR || errno == EAGAIN));
}

}  // namespace valdorn
