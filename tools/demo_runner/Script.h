#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace valdorn::demo {

enum class Stream { standardOutput, standardError };

// Steps of both commands.
struct Wait {
    std::chrono::milliseconds time;
};
struct Hang {};
struct Print {
    Stream stream;
    std::string text;
    bool hasLineEnd;
};
struct Crash {
    int signal;
};
struct Exit {
    int code;
};
struct IgnoreTerm {};
struct Flood {
    enum class Form { lines, noLineEnd, binary };
    std::uint64_t bytes;
    Form form;
};
struct Crlf {
    bool on;
};
struct SplitWrites {
    std::size_t pieceBytes;  // 0: whole writes
};
struct Grandchild {
    std::chrono::milliseconds time;
};

// Steps of the daemon.
struct Start {};
struct Declare {};
struct Job {
    std::string repository;
    std::string label;  // Workflow/job; may hold blanks
    std::chrono::milliseconds time;
};
struct FetchFailure {
    std::string reason;  // the kernel's text
};
struct Pad {
    std::size_t width;  // of the job label inside its brackets
};
struct Loop {};

// Step of register.
struct BadToken {};

using Step = std::variant<Wait, Hang, Print, Crash, Exit, IgnoreTerm, Flood, Crlf, SplitWrites,
                          Grandchild, Start, Declare, Job, FetchFailure, Pad, Loop, BadToken>;

// What is to be played, step by step. A value.
struct Script {
    std::vector<Step> daemonSteps;
    std::vector<Step> registerSteps;
};

// A script that cannot be read or understood; what() is one line for the user.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads a script's text; throws ScriptError with `name` and the line's number. One step a line;
// empty lines and lines that begin with "#" are skipped; "register: STEP" belongs to register.
Script parseScript(std::string_view text, const std::string& name);

// The script of this run: the file that the environment variable VALDORN_DEMO_SCRIPT names, else
// demo_runner.script in the working folder, else an empty one. Throws ScriptError.
Script loadScript();

// What the daemon plays without a script: a short job now and then.
Script ordinaryLife();

// Help on all steps, for --help.
std::string_view stepHelp();

}  // namespace valdorn::demo
