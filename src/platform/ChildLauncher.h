#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"

namespace valdorn {

// What to start. All paths are absolute.
struct ChildCommand {
    std::string executable;
    std::vector<std::string> arguments;    // without the executable's own name
    std::string workingFolder;             // must exist when the child is launched
    std::vector<std::string> environment;  // "NAME=value", the child's whole environment
};

// How a child ended, as the kernel tells it: an exit code and a signal are different things.
struct ChildExit {
    enum class Kind { exited, signalled };
    Kind kind = Kind::exited;
    int number = 0;  // exit code 0..255, or the signal's number

    friend bool operator==(const ChildExit&, const ChildExit&) = default;
};

// Why no child came to be.
struct LaunchError {
    enum class Step {
        prepare,        // pipes, descriptors, memory, process table
        workingFolder,  // the child could not enter its folder
        execute,        // the executable is missing, not executable, or not a program
        interrupted,    // the launcher was told that the program is quitting
    };
    Step step = Step::prepare;
    int errorNumber = 0;  // errno of the failing step; 0 for `interrupted`
    std::string subject;  // the path that the step was about, or empty

    // One readable English line, without a line end.
    std::string description() const;

    friend bool operator==(const LaunchError&, const LaunchError&) = default;
};

// Stands for bytes of output that have been handed over and are still held in memory. Whoever
// keeps a chunk, or something cut from it, for later keeps its credit as long. Movable; dropped on
// any thread.
using OutputCredit = std::shared_ptr<void>;

// Bytes handed over and not yet credited back at which the launcher stops reading a child: four of
// the largest chunks, enough that the reader never waits for a main thread that keeps up.
inline constexpr std::size_t maxPendingOutputBytes = std::size_t{256} * 1024;

// The most that one chunk of output holds: what a pipe holds unless it is made larger, so that a
// read empties it.
inline constexpr std::size_t maxChunkBytes = std::size_t{64} * 1024;

// Called on the launcher's reader thread, one call at a time for one child. Neither may block for
// long or throw: all children share that thread.
struct ChildHandlers {
    // The next bytes of the child's output, standard output and standard error merged in the order
    // written; at most maxChunkBytes, never empty, valid during the call only. A chunk ends where
    // the child has stopped for the moment, which may be anywhere. Where it prints faster than it is
    // read, so that the launcher has to cut, that is behind a line feed or, in a chunk without one,
    // not within a character of UTF-8. While more than maxPendingOutputBytes of this child's credits
    // are alive, no further bytes are read: the pipe fills and holds the child back, and nothing is
    // lost.
    std::function<void(std::string_view chunk, OutputCredit credit)> onOutput;

    // The child has ended. Called exactly once, as the last call, after everything that was
    // readable at its end has been handed to onOutput (held back like any other output). What a
    // grandchild that kept the pipe writes later is discarded; its end is not waited for.
    std::function<void(ChildExit exit)> onExit;
};

// A launched child. Owned by the caller; dropping the handle neither signals the child nor waits
// for it, and its handlers go on being called. All members may be called from any thread.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    virtual ~ChildProcess() = default;

    // The kernel's process id. It may belong to another process once isRunning() is false.
    virtual std::int64_t id() const = 0;

    // True until the child has ended; onExit may still be outstanding then.
    virtual bool isRunning() const = 0;

    // Asks this one process, not its descendants, to end (SIGTERM). Returns at once, never
    // escalates. Harmless, and never sent to a stranger, when the child has ended. May be called
    // again.
    virtual void terminate() = 0;
};

// Starts child processes.
//
// A child gets: null as its standard input, one pipe as both standard output and standard error,
// no other descriptor, an empty signal mask, default signal dispositions, and a process group of
// its own (a Ctrl-C in the terminal reaches only this program). The exit of a launched child is
// what the kernel says, never the end of the pipe.
//
// Destruction stops and joins the reader thread: no handler is called after it has returned.
// Children live on, and what they print then is thrown away; credits may still be dropped later.
class ChildLauncher {
public:
    ChildLauncher() = default;
    ChildLauncher(const ChildLauncher&) = delete;
    ChildLauncher& operator=(const ChildLauncher&) = delete;
    virtual ~ChildLauncher() = default;

    // Any thread. Starts a child; returns when it runs the executable, or why it does not. The
    // handlers are owned until onExit has returned; on failure neither is ever called.
    virtual Result<std::unique_ptr<ChildProcess>, LaunchError> launch(const ChildCommand& command,
                                                                      ChildHandlers handlers) = 0;

    // Blocks the calling thread, never the main thread: starts a child, hands each chunk of its
    // output to `onOutput` on the calling thread until the end of the stream, then waits for the
    // child to end. A grandchild that keeps the pipe thus keeps the caller. No time-out. Returns
    // LaunchError::interrupted early after shutDown(); the child is asked to end then (SIGTERM), as
    // nobody is left who wants to know what comes of it.
    virtual Result<ChildExit, LaunchError> run(
        const ChildCommand& command,
        const std::function<void(std::string_view chunk)>& onOutput) = 0;

    // Any thread. The program is quitting: every run() returns soon, and from here on run() and
    // launch() start nothing and answer LaunchError::interrupted. Children of launch() are left
    // alone, and their handlers go on being called.
    virtual void shutDown() = 0;
};

}  // namespace valdorn
