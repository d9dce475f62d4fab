#include <array>
#include <cerrno>

#include "failures/calls/FailingCalls.h"

namespace valdorn::failing {

namespace {

constexpr Failure end{Manner::refuse, -1, false};
constexpr Failure interrupted{Manner::refuse, EINTR, true};
constexpr Failure shortened{Manner::shorten, 0, true};

constexpr Failure refused(int error) {
    return {Manner::refuse, error, false};
}

// It was done, and yet it says that it was not.
constexpr Failure late(int error, bool isTransparent = true) {
    return {Manner::refuseLate, error, isTransparent};
}

constexpr std::array clones{refused(EAGAIN), refused(ENOMEM), refused(EMFILE), end};
constexpr std::array closes{late(EINTR), late(EIO, false), late(ENOSPC, false), late(EDQUOT, false),
                            end};
constexpr std::array quietCloses{late(EINTR), late(EIO), end};
constexpr std::array connects{interrupted, refused(EAGAIN), refused(ECONNREFUSED), end};
constexpr std::array descriptors{refused(EMFILE), refused(ENFILE), refused(ENOMEM), end};
constexpr std::array epollControls{refused(ENOMEM), refused(ENOSPC), end};
constexpr std::array interruptions{interrupted, end};
constexpr std::array counters{interrupted, late(EAGAIN), end};
constexpr std::array permissions{refused(EPERM), refused(EIO), refused(EROFS), end};
constexpr std::array duplicates{refused(EMFILE), refused(ENOMEM), end};
constexpr std::array pipeSizes{refused(EPERM), refused(EBUSY), refused(ENOMEM), end};
constexpr std::array flags{refused(EPERM), end};
constexpr std::array memory{refused(ENOMEM), end};
constexpr std::array locks{interrupted, refused(ENOLCK), refused(EWOULDBLOCK), end};
constexpr std::array looks{refused(EACCES), refused(ENOMEM), refused(EIO), end};
constexpr std::array truncations{interrupted, refused(EIO), refused(EACCES), end};
constexpr std::array reservations{interrupted, refused(ENOSPC), refused(EDQUOT),
                                  Failure{Manner::refuse, EOPNOTSUPP, true}, end};
constexpr std::array names{refused(ENAMETOOLONG), end};
constexpr std::array accounts{interrupted, refused(EIO), refused(EMFILE), refused(ENOMEM), end};
constexpr std::array limits{refused(EPERM), refused(EINVAL), end};
constexpr std::array controls{refused(ENOMEM), end};
constexpr std::array changes{refused(EACCES), refused(EIO),    refused(ENOSPC),
                             refused(EDQUOT), refused(ENOMEM), end};
constexpr std::array opens{interrupted,     refused(EMFILE), refused(ENFILE),
                           refused(ENOMEM), refused(ENOSPC), refused(EDQUOT),
                           refused(EACCES), refused(EIO),    end};
constexpr std::array signals{refused(EPERM), end};
constexpr std::array polls{interrupted, refused(ENOMEM), end};
constexpr std::array fileReads{interrupted, shortened, refused(EIO), end};
constexpr std::array pipeReads{interrupted, shortened, end};
constexpr std::array receipts{interrupted, refused(ECONNRESET), refused(ENOMEM), end};
constexpr std::array sends{interrupted,         shortened,       refused(EPIPE),
                           refused(ECONNRESET), refused(ENOMEM), end};
constexpr std::array threads{refused(EAGAIN), end};
constexpr std::array reapings{late(ECHILD, false), end};
constexpr Failure cutAndFull{Manner::cut, ENOSPC, false};
constexpr std::array fileWrites{interrupted,  shortened,      refused(ENOSPC), refused(EDQUOT),
                                refused(EIO), refused(EFBIG), cutAndFull,      end};
constexpr std::array otherWrites{interrupted,  shortened,       refused(EPIPE),
                                 refused(EIO), refused(EAGAIN), end};
constexpr std::array folders{refused(EACCES), refused(ENOENT), refused(ENOMEM), refused(EIO), end};
constexpr std::array executions{refused(ENOENT),  refused(EACCES),  refused(ENOMEM),
                                refused(EAGAIN),  refused(ENFILE),  refused(EIO),
                                refused(ETXTBSY), refused(ENOEXEC), end};
constexpr std::array ranges{refused(ENOMEM), refused(ENOSYS), end};
constexpr std::array childDuplicates{interrupted, refused(EMFILE), end};

constexpr std::array<CallKind, callCount> kinds{{
    {"clone", clones.data()},
    {"close", closes.data()},
    {"closedir", quietCloses.data()},
    {"connect", connects.data()},
    {"epoll_ctl", epollControls.data()},
    {"epoll_create1", descriptors.data()},
    {"epoll_wait", interruptions.data()},
    {"eventfd", descriptors.data()},
    {"eventfd_read", counters.data()},
    {"eventfd_write", counters.data()},
    {"fallocate", reservations.data()},
    {"fchmod", permissions.data()},
    {"fclose", quietCloses.data()},
    {"fcntl_F_DUPFD_CLOEXEC", duplicates.data()},
    {"fcntl_F_SETPIPE_SZ", pipeSizes.data()},
    {"fcntl_F_SETFL", flags.data()},
    {"fdopendir", memory.data()},
    {"flock", locks.data()},
    {"fopen", descriptors.data()},
    {"fstat", looks.data()},
    {"ftruncate", truncations.data()},
    {"gethostname", names.data()},
    {"getpwuid_r", accounts.data()},
    {"getrlimit", limits.data()},
    {"ioctl", controls.data()},
    {"kill", signals.data()},
    {"lstat", looks.data()},
    {"mkdir", changes.data()},
    {"open", opens.data()},
    {"openat", opens.data()},
    {"pidfd_open", descriptors.data()},
    {"pidfd_send_signal", signals.data()},
    {"pipe2", descriptors.data()},
    {"poll", polls.data()},
    {"pread", fileReads.data()},
    {"read_file", fileReads.data()},
    {"read_pipe", pipeReads.data()},
    {"readdir", looks.data()},
    {"readlink", looks.data()},
    {"realpath", looks.data()},
    {"recv", receipts.data()},
    {"remove", changes.data()},
    {"rename", changes.data()},
    {"send", sends.data()},
    {"setrlimit", limits.data()},
    {"socket", descriptors.data()},
    {"stat", looks.data()},
    {"pthread_create", threads.data()},
    {"unlink", changes.data()},
    {"unlinkat", changes.data()},
    {"waitid", interruptions.data()},
    {"waitid_reaping", reapings.data()},
    {"waitpid", interruptions.data()},
    {"write_file", fileWrites.data()},
    {"write_other", otherWrites.data()},
    {"child_chdir", folders.data()},
    {"child_close_range", ranges.data()},
    {"child_dup3", childDuplicates.data()},
    {"child_execve", executions.data()},
    {"child_setpgid", flags.data()},
}};

}  // namespace

const CallKind& kindOf(Call call) {
    return kinds[static_cast<std::size_t>(call)];
}

}  // namespace valdorn::failing
