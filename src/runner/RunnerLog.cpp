#include "runner/RunnerLog.h"

#include "runner/LineHints.h"
#include "runner/RunnerLogTexts.h"

namespace valdorn {

namespace Texts = RunnerLogTexts;

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

// A label, or nothing.
std::string_view labelOf(std::string_view line) {
    if (!line.starts_with('['))
        return {};
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos)
        return {};
    const std::string_view label = line.substr(1, end - 1);

    // Where all are slashes, none is found behind them.
    const std::size_t slash = label.find('/', label.find_first_not_of('/'));
    if (slash == std::string_view::npos)
        return {};
    const std::string_view job = label.substr(slash + 1);
    return job.empty() || contains(job, " ") ? std::string_view{} : label;
}

}  // namespace

RunnerLogEvent RunnerLog::event(std::string_view line) {
    if (const auto rest = textAfter(line, Texts::repository)) {
        const std::string_view name = firstWord(*rest);
        if (!name.empty())
            return {Kind::repository, std::string(name)};
    }
    if (contains(line, Texts::jobStarted))
        return {Kind::jobStarted, {}};
    if (contains(line, Texts::worker) && contains(line, Texts::finished))
        return {Kind::jobFinished, {}};
    if (contains(line, Texts::declared))
        return {Kind::declared, {}};
    if (contains(line, Texts::noRoute))
        return {Kind::networkBlocked, {}};
    if (contains(line, Texts::denied))
        return {Kind::networkBlocked, {}};
    return {};
}

std::optional<std::string> RunnerLog::workflowJob(std::string_view line) {
    const std::string_view label = labelOf(line);
    return label.empty() ? std::nullopt : std::make_optional<std::string>(label);
}

std::optional<std::string> RunnerLog::version(std::string_view line) {
    const auto rest = textAfter(line, Texts::version);
    if (!rest)
        return std::nullopt;
    const std::string_view version = rest->substr(0, rest->find_first_of(", "));
    if (version.empty())
        return std::nullopt;
    return std::string(version);
}

std::vector<RunnerNews> RunnerLog::news(std::span<const std::string_view> lines) {
    std::vector<RunnerNews> all;
    // Of the job that still stands after all news so far, between its brackets; empty for none. To
    // look for it is quicker than finding out what the label of a line is, and nearly all labelled
    // lines follow one of the same job.
    std::string_view lastLabel;
    for (const std::string_view line : lines) {
        const bool isOfLastJob = !lastLabel.empty() && line.starts_with(lastLabel);
        const std::string_view newJob = isOfLastJob ? std::string_view{} : labelOf(line);
        const bool mayTell = LineHints::mayTell(line);
        if (newJob.empty() && !mayTell)
            continue;
        RunnerNews news;
        if (!newJob.empty()) {
            news.job = newJob;
            lastLabel = line.substr(0, line.find(']') + 1);
        }
        if (mayTell) {
            news.version = version(line);
            news.event = event(line);
        }
        if (news.event.kind == Kind::declared)
            lastLabel = {};
        if (news != RunnerNews{})
            all.push_back(std::move(news));
    }
    return all;
}

}  // namespace valdorn
