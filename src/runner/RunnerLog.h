#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace valdorn {

// What one output line of the runner daemon says about the runner.
struct RunnerLogEvent {
    enum class Kind {
        repository,      // it took a task of the repository that is named
        jobStarted,      // it runs a job
        jobFinished,     // a worker ended its task
        declared,        // it declared itself to the server
        networkBlocked,  // the network refused it
        unrelated,       // nothing that matters here
    };
    Kind kind = Kind::unrelated;
    std::string repository;  // the name, for Kind::repository only; else empty

    friend bool operator==(const RunnerLogEvent&, const RunnerLogEvent&) = default;
};

// Reads the daemon's output lines, given without their line ends. Pure functions of the text: no
// state, any thread, no failures; matching is of plain bytes and case-sensitive.
namespace RunnerLog {

// Classifies a line. When it matches several events, the order of the rules decides:
// repository, jobStarted, jobFinished, declared, networkBlocked.
RunnerLogEvent event(std::string_view line);

// The "workflow/job" label in brackets at the start of a job's output line, or nothing. The text
// between the brackets is given as it is; there must be a "/" with something on both sides, and no
// blank after it.
std::optional<std::string> workflowJob(std::string_view line);

// The version in a line that says "with version: V", up to a comma, a blank or the line's end;
// nothing when it is missing or empty.
std::optional<std::string> version(std::string_view line);

}  // namespace RunnerLog

}  // namespace valdorn
