#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include "platform/ChildLauncher.h"
#include "runner/RunnerError.h"

namespace valdorn {

// How a registration went: it succeeded, the tool refused it, or the tool could not be launched.
struct Registered {
    friend bool operator==(const Registered&, const Registered&) = default;
};
using RegistrationOutcome = std::variant<Registered, RunnerError, LaunchError>;

// What the registration tool says, reduced while it arrives to what a failure's message needs, so
// that a tool that floods cannot fill the memory. One thread at a time.
class RegistrationOutput {
public:
    // A line longer than this is cut to its last `keptTailCharacters`: nobody can read more.
    static constexpr std::size_t maxLineBytes = std::size_t{1024} * 1024;
    static constexpr std::size_t keptTailCharacters = 8000;

    // Takes the next bytes.
    void append(std::string_view chunk);

    // The tool's last line that is not empty; without one, the output as it is (empty lines); for
    // output that is not UTF-8, a text that names the exit status.
    std::string message(int exitStatus) const;

private:
    void cutCurrentLine();

    std::string lastLine_;     // the last completed line that is not empty
    std::string currentLine_;  // what came after the last line feed
    std::size_t lineFeeds_ = 0;
    bool broken_ = false;  // a completed line was not UTF-8
};

// One run of `act_runner register`: the command as it was when the user asked for it. A plain
// value, so that it can be taken to a background thread while the record is edited further.
class Registration {
public:
    // `launcher` outlives this. The command is complete: executable, arguments, folder,
    // environment.
    Registration(ChildLauncher& launcher, ChildCommand command);

    // Any thread but the main thread, which it would block: runs the tool, reads all it prints,
    // then waits for its end. No time-out: a tool that hangs keeps the thread, until the launcher
    // is told to interrupt its runs.
    RegistrationOutcome run() const;

    const ChildCommand& command() const { return command_; }

private:
    ChildLauncher& launcher_;
    ChildCommand command_;
};

}  // namespace valdorn
