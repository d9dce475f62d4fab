#include "failures/KeptLines.h"

#include <algorithm>
#include <cstdio>

#include "failures/children/Flood.h"

namespace valdorn {

namespace {

std::string structured(const std::string& words, pid_t pid) {
    return "time=\"now\" level=info msg=\"" + words + " " + std::to_string(pid) + "\"";
}

std::vector<std::string> linesOf(pid_t pid, bool hasDied) {
    std::vector<std::string> lines{structured("begins", pid),
                                   structured("with version: v1.2.3, declare successfully", pid)};
    for (int line = 0; hasDied && line < flood::lines; line += flood::keptEvery)
        lines.push_back("Error: " + std::to_string(pid) + "." + std::to_string(line));
    lines.push_back(structured(hasDied ? "dies" : "ends", pid));
    return lines;
}

// Which launch a line tells to be of, or 0.
pid_t launchOf(const std::string& line) {
    int pid = 0;
    const auto place = line.find_last_of(" ");
    if (place != std::string::npos)
        std::sscanf(line.c_str() + place, " %d", &pid);
    return pid;
}

}  // namespace

KeptLines::KeptLines(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        lines_[launchOf(line)].push_back(line);
}

void KeptLines::expect(pid_t pid, bool hasDied, bool isLast) {
    auto expected = linesOf(pid, hasDied);
    auto found = lines_.extract(pid);
    auto seen = found ? std::move(found.mapped()) : std::vector<std::string>{};
    const bool isWhole =
        seen == expected ||
        (isLast && std::equal(seen.begin(), seen.end(), expected.begin(), expected.end() - 1));
    hurt_ += isWhole ? 0 : 1;
    strange_ += static_cast<std::size_t>(
        std::count_if(seen.begin(), seen.end(), [&](const std::string& line) {
            return std::find(expected.begin(), expected.end(), line) == expected.end();
        }));
}

std::size_t KeptLines::strangeLines() const {
    std::size_t count = strange_;
    for (const auto& [pid, lines] : lines_)
        count += lines.size();
    return count;
}

}  // namespace valdorn
