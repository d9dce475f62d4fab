// The functions that stand before the C library's. Compiled without sanitizers, which would take
// some of them for their own.

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>
}

#include "failures/calls/Plan.h"

using namespace valdorn::failing;

extern "C" int __clone(int (*)(void*), void*, int, void*, ...);

namespace {

// The function of that name that comes after ours.
template <auto* own>
auto* next(const char* name) {
    static std::atomic<decltype(own)> found = nullptr;
    if (found == nullptr)
        found = reinterpret_cast<decltype(own)>(dlsym(RTLD_NEXT, name));
    return found.load();
}

// Makes the call, or fails with what the function answers then. Part of the function that stands
// before the other, so that whoever has called that is known.
template <typename Make, typename Answer>
[[gnu::always_inline]] inline Answer tell(Call call, Answer failed, const Make& make) {
    const Verdict verdict = consult(call, __builtin_return_address(0));
    if (!verdict.fails)
        return make();
    if (verdict.failure.manner == Manner::refuseLate)
        make();
    errno = verdict.failure.error;
    return failed;
}

// The same for functions that answer with the errno itself.
template <typename Make>
[[gnu::always_inline]] inline int tellNumber(Call call, const Make& make) {
    const Verdict verdict = consult(call, __builtin_return_address(0));
    return verdict.fails ? verdict.failure.error : make();
}

// The same for functions that move bytes; `make` is given how many.
template <typename Make>
[[gnu::always_inline]] inline ssize_t tellBytes(Call call, size_t bytes, const Make& make) {
    const Verdict verdict = consult(call, __builtin_return_address(0));
    if (!verdict.fails)
        return make(bytes);
    if (verdict.failure.manner == Manner::shorten)
        return make(bytes < 1 ? bytes : 1);
    if (verdict.failure.manner == Manner::cut)
        return make(bytes / 2 > 0 ? bytes / 2 : bytes);
    errno = verdict.failure.error;
    return -1;
}

bool isFile(int descriptor) {
    struct stat status {};
    const int before = errno;
    const Quiet quiet;
    const bool is = next<&::fstat>("fstat")(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    errno = before;
    return is;
}

Call callOn(int descriptor, Call file, Call other) {
    return !isLookedAt() || isFile(descriptor) ? file : other;
}

// What a child asks for by number; Call::count for all that cannot fail.
Call childCall(long number) {
    switch (number) {
        case SYS_chdir:
            return Call::childChdir;
        case SYS_close_range:
            return Call::childCloseRange;
        case SYS_dup3:
            return Call::childDup;
        case SYS_execve:
            return Call::childExecute;
        case SYS_setpgid:
            return Call::childSetGroup;
        default:
            return Call::count;
    }
}

Call controlCall(int command) {
    switch (command) {
        case F_DUPFD_CLOEXEC:
            return Call::fcntlDuplicate;
        case F_SETFL:
            return Call::fcntlSetFlags;
        case F_SETPIPE_SZ:
        case F_GETPIPE_SZ:
            return Call::fcntlPipeSize;
        default:
            return Call::count;
    }
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return tell(Call::open, -1, [&] { return next<&::open>("open")(path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return tell(Call::openat, -1,
                [&] { return next<&::openat>("openat")(folder, path, flags, mode); });
}

int close(int descriptor) {
    return tell(Call::close, -1, [&] { return next<&::close>("close")(descriptor); });
}

ssize_t read(int descriptor, void* buffer, size_t bytes) {
    return tellBytes(callOn(descriptor, Call::readFile, Call::readPipe), bytes, [&](size_t count) {
        return next<&::read>("read")(descriptor, buffer, count);
    });
}

ssize_t pread(int descriptor, void* buffer, size_t bytes, off_t offset) {
    return tellBytes(Call::pread, bytes, [&](size_t count) {
        return next<&::pread>("pread")(descriptor, buffer, count, offset);
    });
}

ssize_t write(int descriptor, const void* buffer, size_t bytes) {
    return tellBytes(
        callOn(descriptor, Call::writeFile, Call::writeOther), bytes,
        [&](size_t count) { return next<&::write>("write")(descriptor, buffer, count); });
}

ssize_t recv(int descriptor, void* buffer, size_t bytes, int flags) {
    return tellBytes(Call::receive, bytes, [&](size_t count) {
        return next<&::recv>("recv")(descriptor, buffer, count, flags);
    });
}

ssize_t send(int descriptor, const void* buffer, size_t bytes, int flags) {
    return tellBytes(Call::send, bytes, [&](size_t count) {
        return next<&::send>("send")(descriptor, buffer, count, flags);
    });
}

int socket(int domain, int type, int protocol) noexcept {
    return tell(Call::socket, -1,
                [&] { return next<&::socket>("socket")(domain, type, protocol); });
}

int connect(int descriptor, const struct sockaddr* address, socklen_t size) {
    return tell(Call::connect, -1,
                [&] { return next<&::connect>("connect")(descriptor, address, size); });
}

int pipe2(int* ends, int flags) noexcept {
    return tell(Call::pipe, -1, [&] { return next<&::pipe2>("pipe2")(ends, flags); });
}

int eventfd(unsigned value, int flags) noexcept {
    return tell(Call::eventfd, -1, [&] { return next<&::eventfd>("eventfd")(value, flags); });
}

int eventfd_read(int descriptor, eventfd_t* value) {
    return tell(Call::eventfdRead, -1,
                [&] { return next<&::eventfd_read>("eventfd_read")(descriptor, value); });
}

int eventfd_write(int descriptor, eventfd_t value) {
    return tell(Call::eventfdWrite, -1,
                [&] { return next<&::eventfd_write>("eventfd_write")(descriptor, value); });
}

int epoll_create1(int flags) noexcept {
    return tell(Call::epollCreate, -1,
                [&] { return next<&::epoll_create1>("epoll_create1")(flags); });
}

int epoll_ctl(int epoll, int operation, int descriptor, struct epoll_event* event) noexcept {
    return tell(Call::epollControl, -1, [&] {
        return next<&::epoll_ctl>("epoll_ctl")(epoll, operation, descriptor, event);
    });
}

int epoll_wait(int epoll, struct epoll_event* events, int count, int patience) {
    return tell(Call::epollWait, -1,
                [&] { return next<&::epoll_wait>("epoll_wait")(epoll, events, count, patience); });
}

int poll(struct pollfd* waits, nfds_t count, int patience) {
    return tell(Call::poll, -1, [&] { return next<&::poll>("poll")(waits, count, patience); });
}

int fcntl(int descriptor, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    const auto make = [&] { return next<&::fcntl>("fcntl")(descriptor, command, argument); };
    const Call call = controlCall(command);
    return call == Call::count ? make() : tell(call, -1, make);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return tell(Call::ioctl, -1,
                [&] { return next<&::ioctl>("ioctl")(descriptor, request, argument); });
}

int flock(int descriptor, int operation) noexcept {
    return tell(Call::flock, -1, [&] { return next<&::flock>("flock")(descriptor, operation); });
}

int fstat(int descriptor, struct stat* status) noexcept {
    return tell(Call::fstat, -1, [&] { return next<&::fstat>("fstat")(descriptor, status); });
}

int stat(const char* path, struct stat* status) noexcept {
    return tell(Call::stat, -1, [&] { return next<&::stat>("stat")(path, status); });
}

int lstat(const char* path, struct stat* status) noexcept {
    return tell(Call::lstat, -1, [&] { return next<&::lstat>("lstat")(path, status); });
}

int fchmod(int descriptor, mode_t mode) noexcept {
    return tell(Call::fchmod, -1, [&] { return next<&::fchmod>("fchmod")(descriptor, mode); });
}

int fallocate(int descriptor, int mode, off_t offset, off_t length) {
    return tell(Call::fallocate, -1,
                [&] { return next<&::fallocate>("fallocate")(descriptor, mode, offset, length); });
}

int ftruncate(int descriptor, off_t size) noexcept {
    return tell(Call::ftruncate, -1,
                [&] { return next<&::ftruncate>("ftruncate")(descriptor, size); });
}

int mkdir(const char* path, mode_t mode) noexcept {
    return tell(Call::mkdir, -1, [&] { return next<&::mkdir>("mkdir")(path, mode); });
}

int rename(const char* from, const char* to) noexcept {
    return tell(Call::rename, -1, [&] { return next<&::rename>("rename")(from, to); });
}

int remove(const char* path) noexcept {
    return tell(Call::remove, -1, [&] { return next<&::remove>("remove")(path); });
}

int unlink(const char* path) noexcept {
    return tell(Call::unlink, -1, [&] { return next<&::unlink>("unlink")(path); });
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return tell(Call::unlinkat, -1,
                [&] { return next<&::unlinkat>("unlinkat")(folder, path, flags); });
}

ssize_t readlink(const char* path, char* buffer, size_t bytes) noexcept {
    return tell(Call::readlink, ssize_t{-1},
                [&] { return next<&::readlink>("readlink")(path, buffer, bytes); });
}

char* realpath(const char* path, char* resolved) noexcept {
    return tell(Call::realpath, static_cast<char*>(nullptr),
                [&] { return next<&::realpath>("realpath")(path, resolved); });
}

FILE* fopen64(const char* path, const char* mode) {
    return tell(Call::fopen, static_cast<FILE*>(nullptr),
                [&] { return next<&::fopen64>("fopen64")(path, mode); });
}

int fclose(FILE* file) {
    return tell(Call::fclose, EOF, [&] { return next<&::fclose>("fclose")(file); });
}

DIR* fdopendir(int descriptor) {
    return tell(Call::fdopendir, static_cast<DIR*>(nullptr),
                [&] { return next<&::fdopendir>("fdopendir")(descriptor); });
}

struct dirent* readdir(DIR* folder) {
    return tell(Call::readdir, static_cast<struct dirent*>(nullptr),
                [&] { return next<&::readdir>("readdir")(folder); });
}

int closedir(DIR* folder) {
    return tell(Call::closedir, -1, [&] { return next<&::closedir>("closedir")(folder); });
}

int gethostname(char* name, size_t bytes) noexcept {
    return tell(Call::gethostname, -1,
                [&] { return next<&::gethostname>("gethostname")(name, bytes); });
}

int getpwuid_r(uid_t user, struct passwd* entry, char* buffer, size_t bytes,
               struct passwd** found) {
    return tellNumber(Call::getpwuid, [&] {
        return next<&::getpwuid_r>("getpwuid_r")(user, entry, buffer, bytes, found);
    });
}

int getrlimit(__rlimit_resource_t resource, struct rlimit* limit) noexcept {
    return tell(Call::getrlimit, -1,
                [&] { return next<&::getrlimit>("getrlimit")(resource, limit); });
}

int setrlimit(__rlimit_resource_t resource, const struct rlimit* limit) noexcept {
    return tell(Call::setrlimit, -1,
                [&] { return next<&::setrlimit>("setrlimit")(resource, limit); });
}

int kill(pid_t pid, int signal) noexcept {
    return tell(Call::kill, -1, [&] { return next<&::kill>("kill")(pid, signal); });
}

int pidfd_open(pid_t pid, unsigned flags) noexcept {
    return tell(Call::pidfdOpen, -1, [&] { return next<&::pidfd_open>("pidfd_open")(pid, flags); });
}

int pidfd_send_signal(int process, int signal, siginfo_t* info, unsigned flags) noexcept {
    return tell(Call::pidfdSendSignal, -1, [&] {
        return next<&::pidfd_send_signal>("pidfd_send_signal")(process, signal, info, flags);
    });
}

int waitid(idtype_t type, id_t id, siginfo_t* info, int options) {
    const int answer =
        tell(Call::waitid, -1, [&] { return next<&::waitid>("waitid")(type, id, info, options); });
    if (answer != 0 || info->si_pid == 0)
        return answer;
    // As if somebody else had waited for it.
    return tell(Call::waitidReaping, -1, [] { return 0; });
}

pid_t waitpid(pid_t pid, int* status, int options) {
    return tell(Call::waitpid, -1,
                [&] { return next<&::waitpid>("waitpid")(pid, status, options); });
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
    return tellNumber(Call::threadCreate, [&] {
        return next<&::pthread_create>("pthread_create")(thread, attributes, body, argument);
    });
}

int __clone(int (*function)(void*), void* stack, int flags, void* argument, ...) {
    va_list rest;
    va_start(rest, argument);
    void* const parentId = va_arg(rest, void*);
    va_end(rest);
    return tell(Call::clone, -1, [&] {
        return next<&::__clone>("__clone")(function, stack, flags, argument, parentId);
    });
}

long syscall(long number, ...) noexcept {
    va_list rest;
    va_start(rest, number);
    long a[6];
    for (long& one : a)
        one = va_arg(rest, long);
    va_end(rest);
    const auto make = [&] {
        return next<&::syscall>("syscall")(number, a[0], a[1], a[2], a[3], a[4], a[5]);
    };
    const Call call = childCall(number);
    return call == Call::count ? make() : tell(call, -1L, make);
}

}  // extern "C"
