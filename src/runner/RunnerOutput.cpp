#include "runner/RunnerOutput.h"

#include <tuple>

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
    lines_.clear();
    if (isWellFormedUtf8(chunk)) {
        cut(chunk);
        keepLines();
        shorten();
    }
    return lines_;
}

void RunnerOutput::cut(std::string_view chunk) {
    std::size_t start = 0;
    for (std::size_t at = chunk.find('\n'); at != std::string_view::npos;
         at = chunk.find('\n', at + 1)) {
        if (!isLineEnd(chunk, at))
            continue;
        const std::string_view line = chunk.substr(start, at - start);
        lines_.push_back(start == 0 ? completed(line) : line);
        start = at + 1;
    }
    lineBuffer_.append(chunk.substr(start));
}

bool RunnerOutput::isLineEnd(std::string_view chunk, std::size_t lineFeed) const {
    const bool followsCarriageReturn =
        lineFeed == 0 ? lineBuffer_.ends_with('\r') : chunk[lineFeed - 1] == '\r';
    return !followsCarriageReturn;
}

// The first line of a chunk, which ends like this.
std::string_view RunnerOutput::completed(std::string_view end) {
    if (lineBuffer_.empty())
        return end;
    firstLine_.swap(lineBuffer_);
    lineBuffer_.clear();
    return firstLine_.append(end);
}

void RunnerOutput::shorten() {
    if (lineBuffer_.size() > maxLineBytes) {
        const auto tail = Text::lastCharacters(lineBuffer_, keptTailCharacters);
        lineBuffer_.erase(0, lineBuffer_.size() - tail.size());
    }
}

// One write for all, or a flood of short lines would spend its time in the kernel.
void RunnerOutput::keepLines() {
    if (!logHandle_)
        return;
    kept_.clear();
    for (const std::string_view line : lines_) {
        if (isKept(line))
            kept_.append(line).push_back('\n');
    }
    if (kept_.empty())
        return;
    // A full disk must not stop the runner: these lines are lost, the next ones are tried again.
    std::ignore = logHandle_->append(kept_);
}

void RunnerOutput::closeLog() {
    logHandle_.reset();
}

}  // namespace valdorn
