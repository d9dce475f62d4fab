#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

// All that one line says: what is there of a version, the label of a job, and an event, to be taken
// in that order.
struct RunnerNews {
    std::optional<std::string> version;
    std::optional<std::string> job;
    RunnerLogEvent event;

    friend bool operator==(const RunnerNews&, const RunnerNews&) = default;
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

// The news in lines that are taken together, in their order, without the lines that have none. The
// label of a job is told once for all lines in a row that carry it, however many lines of another
// kind are between: saying it again changes nothing, as long as nothing in between takes it back.
// Fast where lines have no news, as nearly all have none.
std::vector<RunnerNews> news(std::span<const std::string_view> lines);

}  // namespace RunnerLog

}  // namespace valdorn
