#include "runner/RunnerOutput.h"

#include <tuple>
#include <utility>

#include "platform/FileSystem.h"
#include "text/Text.h"
#include "text/Utf8.h"

namespace valdorn {

namespace {

// Complaints and the daemon's own structured lines are worth keeping; debug lines and what jobs
// print would bury them.
bool isKept(std::string_view line) {
    if (line.starts_with("Error:"))
        return true;
    return line.starts_with("time=\"") && line.find("level=debug") == std::string_view::npos;
}

}  // namespace

RunnerOutput::RunnerOutput(std::unique_ptr<AppendHandle> log) : logHandle_(std::move(log)) {}

RunnerOutput::~RunnerOutput() = default;

LineBatch RunnerOutput::ingest(std::string_view chunk) {
    if (!isWellFormedUtf8(chunk))
        return {};
    const std::size_t searched = lineBuffer_.size();
    lineBuffer_ += chunk;
    LineBatch lines = cutLines(searched);
    keep(lines);
    if (lineBuffer_.size() > maxLineBytes) {
        lineBuffer_ = std::string(Text::lastCharacters(lineBuffer_, keptTailCharacters));
    }
    return lines;
}

LineBatch RunnerOutput::cutLines(std::size_t searchFrom) {
    std::vector<std::size_t> ends;
    for (std::size_t at = lineBuffer_.find('\n', searchFrom); at != std::string::npos;
         at = lineBuffer_.find('\n', at + 1)) {
        const bool followsCarriageReturn = at > 0 && lineBuffer_[at - 1] == '\r';
        if (!followsCarriageReturn)
            ends.push_back(at);
    }
    if (ends.empty())
        return {};

    std::string rest = lineBuffer_.substr(ends.back() + 1);
    lineBuffer_.resize(ends.back() + 1);
    return {std::exchange(lineBuffer_, std::move(rest)), std::move(ends)};
}

void RunnerOutput::keep(const LineBatch& lines) {
    if (!logHandle_)
        return;
    std::string kept;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        if (isKept(lines[index]))
            kept.append(lines[index]).append("\n");
    }
    if (kept.empty())
        return;
    // A full disk must not stop the runner: these lines are lost, the next ones are tried again.
    std::ignore = logHandle_->append(kept);
}

void RunnerOutput::closeLog() {
    logHandle_.reset();
}

}  // namespace valdorn
