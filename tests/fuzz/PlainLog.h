#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "runner/RunnerLog.h"

namespace valdorn {

// What a line of the daemon says, rule by rule, with copies and pieces instead of places in the
// line.
namespace PlainLog {

inline bool has(const std::string& line, const std::string& text) {
    return line.find(text) != std::string::npos;
}

inline std::string after(const std::string& line, const std::string& text) {
    return line.substr(line.find(text) + text.size());
}

// All pieces, also those that are empty; one for a text without separators.
inline std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

inline RunnerLogEvent event(const std::string& line) {
    using Kind = RunnerLogEvent::Kind;
    if (has(line, " repo is ")) {
        for (const std::string& word : split(after(line, " repo is "), ' ')) {
            if (!word.empty())
                return {Kind::repository, word};
        }
    }
    if (has(line, "Running job with maxParallel"))
        return {Kind::jobStarted, {}};
    if (has(line, "Worker") && has(line, "finished ("))
        return {Kind::jobFinished, {}};
    if (has(line, "declare successfully"))
        return {Kind::declared, {}};
    if (has(line, "no route to host") || has(line, "permission denied"))
        return {Kind::networkBlocked, {}};
    return {};
}

inline std::optional<std::string> workflowJob(const std::string& line) {
    if (line.empty() || line[0] != '[' || !has(line, "]"))
        return std::nullopt;
    const std::string label = split(line, ']')[0].substr(1);
    std::vector<std::string> pieces = split(label, '/');
    while (!pieces.empty() && pieces.front().empty())
        pieces.erase(pieces.begin());
    if (pieces.size() < 2)
        return std::nullopt;
    const bool isNothing = pieces.size() == 2 && pieces[1].empty();
    for (std::size_t index = 1; index < pieces.size(); ++index) {
        if (isNothing || has(pieces[index], " "))
            return std::nullopt;
    }
    return label;
}

inline std::optional<std::string> version(const std::string& line) {
    if (!has(line, "with version: "))
        return std::nullopt;
    const std::string version = split(split(after(line, "with version: "), ' ')[0], ',')[0];
    if (version.empty())
        return std::nullopt;
    return version;
}

}  // namespace PlainLog

}  // namespace valdorn
