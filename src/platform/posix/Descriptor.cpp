#include "platform/posix/Descriptor.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

constexpr int firstAboveStandard = 3;

// A program may be started with its standard streams closed; then new descriptors take their
// numbers, and placing one stream of a child would overwrite the source of another.
Result<Descriptor, int> liftAboveStandard(Descriptor descriptor) {
    if (descriptor.number() >= firstAboveStandard)
        return descriptor;
    const int lifted = fcntl(descriptor.number(), F_DUPFD_CLOEXEC, firstAboveStandard);
    if (lifted < 0)
        return errno;
    return Descriptor(lifted);
}

}  // namespace

int Descriptor::release() {
    return std::exchange(number_, -1);
}

void Descriptor::reset(int number) {
    const int old = std::exchange(number_, number);
    // Linux frees the number whatever close answers, so there is nothing to try again.
    if (old >= 0)
        close(old);
}

Result<Pipe, int> openPipe() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    auto readEnd = liftAboveStandard(Descriptor(ends[0]));
    auto writeEnd = liftAboveStandard(Descriptor(ends[1]));
    if (!readEnd)
        return readEnd.error();
    if (!writeEnd)
        return writeEnd.error();
    // Only our end: the child's end is its standard output, which programs expect to block.
    if (fcntl(readEnd.value().number(), F_SETFL, O_NONBLOCK) != 0)
        return errno;
    return Pipe{std::move(readEnd.value()), std::move(writeEnd.value())};
}

Result<Descriptor, int> openPath(const std::string& path, int flags) {
    const int number = uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC); });
    if (number < 0)
        return errno;
    return liftAboveStandard(Descriptor(number));
}

}  // namespace valdorn
