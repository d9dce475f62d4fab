#include "runner/RunnerLog.h"

namespace valdorn::RunnerLog {

namespace {

using Kind = RunnerLogEvent::Kind;

bool contains(std::string_view line, std::string_view text) {
    return line.find(text) != std::string_view::npos;
}

// What follows the first occurrence of `marker`, or nothing.
std::optional<std::string_view> textAfter(std::string_view line, std::string_view marker) {
    const std::size_t at = line.find(marker);
    if (at == std::string_view::npos)
        return std::nullopt;
    return line.substr(at + marker.size());
}

// The first piece between blanks, empty when there is none.
std::string_view firstWord(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find(' ', start) - start);
}

}  // namespace

RunnerLogEvent event(std::string_view line) {
    if (const auto rest = textAfter(line, " repo is ")) {
        const std::string_view name = firstWord(*rest);
        if (!name.empty())
            return {Kind::repository, std::string(name)};
    }
    if (contains(line, "Running job with maxParallel"))
        return {Kind::jobStarted, {}};
    if (contains(line, "Worker") && contains(line, "finished ("))
        return {Kind::jobFinished, {}};
    if (contains(line, "declare successfully"))
        return {Kind::declared, {}};
    if (contains(line, "no route to host"))
        return {Kind::networkBlocked, {}};
    if (contains(line, "permission denied"))
        return {Kind::networkBlocked, {}};
    return {};
}

std::optional<std::string> workflowJob(std::string_view line) {
    if (!line.starts_with('['))
        return std::nullopt;
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view label = line.substr(1, end - 1);

    const std::size_t workflow = label.find_first_not_of('/');
    if (workflow == std::string_view::npos)
        return std::nullopt;
    const std::size_t slash = label.find('/', workflow);
    if (slash == std::string_view::npos)
        return std::nullopt;
    const std::string_view job = label.substr(slash + 1);
    if (job.empty() || contains(job, " "))
        return std::nullopt;
    return std::string(label);
}

std::optional<std::string> version(std::string_view line) {
    const auto rest = textAfter(line, "with version: ");
    if (!rest)
        return std::nullopt;
    const std::string_view version = rest->substr(0, rest->find_first_of(", "));
    if (version.empty())
        return std::nullopt;
    return std::string(version);
}

}  // namespace valdorn::RunnerLog
