#pragma once

#include <cstddef>

// Lets calls of the C library and the kernel fail on demand. The library stands before the C
// library, so it sees what the program asks for and what the C++ library asks for on its behalf;
// not what the C library asks of itself.
//
// A call is looked at while the library is armed, on every thread but those that are quiet. What it
// goes by and what changes meanwhile is atomic or the thread's own: a child that shares our memory
// before its executable runs passes here, too.
namespace valdorn::failing {

// Some functions stand here more than once: what a failure means depends on what they work on.
enum class Call : int {
    clone,
    close,
    closedir,
    connect,
    epollControl,
    epollCreate,
    epollWait,
    eventfd,
    eventfdRead,
    eventfdWrite,
    fallocate,
    fchmod,
    fclose,
    fcntlDuplicate,
    fcntlPipeSize,
    fcntlSetFlags,
    fdopendir,
    flock,
    fopen,
    fstat,
    ftruncate,
    gethostname,
    getpwuid,
    getrlimit,
    ioctl,
    kill,
    lstat,
    mkdir,
    open,
    openat,
    pidfdOpen,
    pidfdSendSignal,
    pipe,
    poll,
    pread,
    readFile,
    readPipe,
    readdir,
    readlink,
    realpath,
    receive,
    remove,
    rename,
    send,
    setrlimit,
    socket,
    stat,
    threadCreate,
    unlink,
    unlinkat,
    waitid,
    waitidReaping,
    waitpid,
    writeFile,
    writeOther,
    // What a child asks of the kernel before its executable runs.
    childChdir,
    childCloseRange,
    childDup,
    childExecute,
    childSetGroup,
    count
};

inline constexpr std::size_t callCount = static_cast<std::size_t>(Call::count);

enum class Manner : int {
    refuse,      // nothing is done
    refuseLate,  // it is done all the same: closed, reaped, told
    shorten,     // one byte is read or written
    cut,         // half of it is written, and the call after that is refused
};

struct Failure {
    Manner manner;
    int error;           // errno, or none with `shorten`
    bool isTransparent;  // nobody is to notice
};

// How a call may fail, in a list that ends with an errno of -1.
struct CallKind {
    const char* name;
    const Failure* failures;
};

const CallKind& kindOf(Call call);

// The nth such call since arming fails, and where it is asked for every other one after that.
struct Fault {
    Call call;
    unsigned nth;  // from 1
    Failure failure;
    bool isRepeated = false;
};

inline constexpr std::size_t maxFaults = 2;

// Copies the faults and counts from 0. One thread, while nobody makes calls.
void arm(const Fault* faults, std::size_t count);
void disarm();

// Since arming.
unsigned timesMade(Call call);
bool hasFired(std::size_t fault);

// While one lives, the calls of its thread are let through uncounted.
class Quiet {
public:
    Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet();
};

}  // namespace valdorn::failing
