// Compiled without sanitizers: the child shares our memory, and is not to leave marks in theirs. For
// the same reason it calls the kernel itself: sanitizers stand before the C library's functions, and
// remember what the child does as if we had done it.

#include "platform/posix/SpawnProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/BirthNote.h"
#include "platform/posix/Uninterrupted.h"

// clone(), by the C library's other name for it, which no sanitizer stands before.
extern "C" int cloneUnseen(int (*function)(void*), void* stack, int flags, void* argument,
                           ...) __asm__("__clone");

namespace valdorn {

namespace {

using Step = SpawnFailure::Step;

constexpr int lastSignal = _NSIG - 1;
constexpr std::size_t signalSetBytes = lastSignal / 8;  // as the kernel has it
using SignalSet = std::array<unsigned char, signalSetBytes>;

// Ample: the child calls nothing but the kernel.
constexpr std::size_t stackBytes = std::size_t{16} * 1024;

struct Task {
    const SpawnRequest& request;
    SpawnFailure failure;  // no error unless the child could not go on
};

void setMask(const SignalSet& mask, SignalSet* before) {
    syscall(SYS_rt_sigprocmask, SIG_SETMASK, mask.data(), before ? before->data() : nullptr,
            signalSetBytes);
}

// Blocked and ignored signals outlive exec. Ours are our own business: a child that ignores
// SIGPIPE or has SIGTERM blocked because we do would not behave as in a terminal.
void resetDispositions() {
    // All zeros is the default, wherever a kernel has which field.
    constexpr std::array<unsigned char, 64> standard{};
    for (int signal = 1; signal <= lastSignal; ++signal)
        syscall(SYS_rt_sigaction, signal, standard.data(), nullptr, signalSetBytes);
}

// Close-on-exec covers the descriptors that we open ourselves. Libraries, and whoever started us,
// may have left others open: everything above the standard streams is closed by number as well.
bool placeDescriptors(const SpawnRequest& request) {
    const auto place = [](int from, int to) {
        return uninterrupted([from, to] { return syscall(SYS_dup3, from, to, 0); }) >= 0;
    };
    return place(request.input, STDIN_FILENO) && place(request.output, STDOUT_FILENO) &&
           place(request.output, STDERR_FILENO);
}

// No more than we were started with: refused only if somebody has lowered our hard limit since, and
// then ours stays.
void setCoreDumpLimit(const SpawnRequest& request) {
    const rlimit* const limit = request.coreDumpLimit;
    if (!limit)
        return;
    const std::array<std::uint64_t, 2> softAndHard{limit->rlim_cur, limit->rlim_max};
    syscall(SYS_prlimit64, 0, RLIMIT_CORE, softAndHard.data(), nullptr);
}

// Takes back a signal that waits to be let through.
void discard(int signal) {
    SignalSet only{};
    const auto bit = static_cast<unsigned>(signal - 1);
    only[bit / 8] = static_cast<unsigned char>(1U << bit % 8);
    constexpr timespec atOnce{};
    syscall(SYS_rt_sigtimedwait, only.data(), nullptr, &atOnce, signalSetBytes);
}

// A process has a short name, and everything else there is numbers.
constexpr std::size_t statBytes = 1024;

// All signals are blocked here. A write beyond the limit on file sizes leaves a SIGXFSZ waiting, and
// one to a named pipe that nobody reads any more a SIGPIPE; either would kill the child as soon as
// signals are let through. A note that cannot be written costs only the tidying up after a crash. A
// named pipe in its place is not waited for.
void writeBirth(const BirthNote& note) {
    std::array<char, statBytes> stat;
    const long self = syscall(SYS_openat, AT_FDCWD, "/proc/self/stat", O_RDONLY | O_CLOEXEC, 0);
    const long got = syscall(SYS_read, self, stat.data(), stat.size());
    const long file = syscall(SYS_openat, AT_FDCWD, note.path.c_str(),
                              O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                              S_IRUSR | S_IWUSR);
    if (got > 0 && file >= 0) {
        syscall(SYS_write, file, note.heading.data(), note.heading.size());
        syscall(SYS_write, file, stat.data(), got);
        discard(SIGXFSZ);
        discard(SIGPIPE);
    }
}

// Gives what the child ends with.
int fail(Task& task, Step step) {
    task.failure = {step, errno};
    return 0;
}

// The child's own part: from its first moment to its executable. Returning ends it.
int runChild(void* argument) {
    Task& task = *static_cast<Task*>(argument);
    const SpawnRequest& request = task.request;
    resetDispositions();
    // A group of its own keeps a Ctrl-C in our terminal from it.
    if (syscall(SYS_setpgid, 0, 0) != 0 || !placeDescriptors(request))
        return fail(task, Step::create);
    if (syscall(SYS_chdir, request.folder) != 0)
        return fail(task, Step::enterFolder);
    if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, 0) != 0)
        return fail(task, Step::create);
    setCoreDumpLimit(request);
    if (request.birthNote)
        writeBirth(*request.birthNote);
    setMask({}, nullptr);
    syscall(SYS_execve, request.executable, request.arguments, request.environment);
    return fail(task, Step::execute);
}

}  // namespace

// Until the child runs its executable this thread stands still, so the child may use a piece of its
// stack. Signals are blocked so that our handlers do not run in the child, in the midst of our
// memory.
Result<SpawnedProcess, SpawnFailure> spawnProcess(const SpawnRequest& request) {
    alignas(std::max_align_t) std::array<std::byte, stackBytes> stack;
    Task task{request, {}};
    SignalSet all;
    SignalSet before;
    all.fill(0xff);
    setMask(all, &before);
    int process = -1;
    const pid_t pid = cloneUnseen(runChild, stack.data() + stack.size(),
                                  CLONE_VM | CLONE_VFORK | CLONE_PIDFD | SIGCHLD, &task, &process);
    if (pid < 0)
        task.failure = {Step::create, errno};
    setMask(before, nullptr);
    Descriptor descriptor(process);
    if (task.failure.errorNumber == 0)
        return SpawnedProcess{pid, std::move(descriptor)};
    if (pid >= 0) {
        uninterrupted([pid] { return waitpid(pid, nullptr, 0); });
    }
    return task.failure;
}

}  // namespace valdorn
