#include "platform/posix/PidDescriptor.h"

// glibc 2.36 forgets to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/wait.h>

#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

// For a child that somebody else in this process has reaped: that it has ended is certain, how is
// not, and those who wait for its end are told all the same.
constexpr ChildExit unknownExit{ChildExit::Kind::exited, 255};

}  // namespace

Result<Descriptor, int> PidDescriptor::open(pid_t pid) {
    const int number = pidfd_open(pid, 0);  // close-on-exec by itself
    if (number < 0)
        return errno;
    return Descriptor(number);
}

PidDescriptor::PidDescriptor(pid_t pid, Descriptor descriptor)
    : pid_(pid), descriptor_(std::move(descriptor)) {}

bool PidDescriptor::isRunning() const {
    const std::lock_guard lock(mutex_);
    if (!descriptor_)
        return false;
    pollfd ended{descriptor_.number(), POLLIN, 0};
    return uninterrupted([&ended] { return poll(&ended, 1, 0); }) <= 0;
}

bool PidDescriptor::send(int signal) const {
    const std::lock_guard lock(mutex_);
    return descriptor_ && pidfd_send_signal(descriptor_.number(), signal, nullptr, 0) == 0;
}

std::optional<ChildExit> PidDescriptor::reap() {
    const std::lock_guard lock(mutex_);
    if (!descriptor_)
        return std::nullopt;
    siginfo_t info{};
    const auto which = static_cast<id_t>(descriptor_.number());
    const int answer =
        uninterrupted([&] { return waitid(P_PIDFD, which, &info, WEXITED | WNOHANG); });
    if (answer == 0 && info.si_pid == 0)
        return std::nullopt;
    descriptor_.reset();
    if (answer != 0)
        return unknownExit;
    const bool byItself = info.si_code == CLD_EXITED;
    return ChildExit{byItself ? ChildExit::Kind::exited : ChildExit::Kind::signalled,
                     info.si_status};
}

int PidDescriptor::number() const {
    const std::lock_guard lock(mutex_);
    return descriptor_.number();
}

}  // namespace valdorn
