#pragma once

#include <string>
#include <string_view>

namespace valdorn::demo {

enum class Level { debug, info, warning, error };

// Where act_runner's own source prints an entry; shown at level debug only.
struct Caller {
    std::string_view function;
    std::string_view place;  // file and line
};

// One entry of a structured log in the text form of Go's logrus, without its line end:
// time="..." level=info msg="..." func="[f]" file="[x.go:1]" error="..."
class LogLine {
public:
    LogLine(Level level, std::string_view message, Caller caller = {});

    LogLine& error(std::string_view text);

    Level level() const { return level_; }

    // As the daemon prints it: with the time now, and the caller if asked for.
    std::string forDaemon(bool withCaller) const;

    // As register prints it: neither time nor caller.
    std::string forRegister() const;

private:
    std::string head() const;

    Level level_;
    std::string message_;
    Caller caller_;
    std::string fields_;
};

// Go's quoted form of a text, so that it stays on one line.
std::string quoted(std::string_view text);

// [Workflow/job] text, and the raw output of a step: [Workflow/job]   | text. `label` as it stands
// between the brackets, padding included.
std::string jobLine(std::string_view label, std::string_view text);
std::string jobOutput(std::string_view label, std::string_view text);

}  // namespace valdorn::demo
