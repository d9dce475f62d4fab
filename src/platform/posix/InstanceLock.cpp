#include "platform/posix/InstanceLock.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/ErrorText.h"
#include "platform/posix/Shortage.h"
#include "platform/posix/Uninterrupted.h"

namespace valdorn {

namespace {

LockRefusal failure(const std::string& path, int errorNumber) {
    return {LockRefusal::Kind::failed,
            "The lock file " + path + " cannot be used: " + errorText(errorNumber),
            isShortage(errorNumber)};
}

// 0, or why the file is of no use.
int examine(const Descriptor& file) {
    struct stat status {};
    if (fstat(file.number(), &status) != 0)
        return errno;
    return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

// Those who tidy up the runtime folder leave alone what carries the sticky bit.
constexpr mode_t privateAndKept = S_ISVTX | S_IRUSR | S_IWUSR;

}  // namespace

Result<InstanceLock, LockRefusal> InstanceLock::acquire(const std::string& path) {
    Descriptor file(uninterrupted([&path] {
        return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                    S_IRUSR | S_IWUSR);
    }));
    if (!file)
        return failure(path, errno);
    if (const int failed = examine(file); failed != 0)
        return failure(path, failed);
    if (uninterrupted([&file] { return flock(file.number(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno == EWOULDBLOCK)
            return LockRefusal{LockRefusal::Kind::held, "Another instance holds " + path};
        return failure(path, errno);
    }
    // Without the mark the lock holds just as well.
    fchmod(file.number(), privateAndKept);
    return InstanceLock(std::move(file));
}

}  // namespace valdorn
