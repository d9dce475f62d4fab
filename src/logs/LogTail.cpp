#include "logs/LogTail.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <optional>
#include <utility>

#include "logs/LastLines.h"
#include "platform/FileSystem.h"

namespace valdorn {

namespace {

// One step of the search backwards: large enough that calls cost nothing, small enough that a
// window's worth of lines takes hardly more than it needs.
constexpr std::size_t blockBytes = std::size_t{64} * 1024;

struct Tail {
    LogLines lines;
    std::uint64_t end;  // where the text ended in the file
};

// The last lines of what stands in the file from `begin` on. Nothing when an error came.
//
// A block that comes short says that somebody has made the file shorter: what was found behind it is
// gone, and the text ends there.
std::optional<Tail> readTail(const ReadHandle& file, std::uint64_t begin, std::size_t maxLines) {
    const auto size = file.sizeBytes();
    if (!size.ok())
        return std::nullopt;

    LastLines lines(maxLines);
    std::uint64_t end = size.value();
    for (std::uint64_t at = end; at > begin && !lines.isFull();) {
        const std::size_t wanted = std::min<std::uint64_t>(at - begin, blockBytes);
        const std::uint64_t from = at - wanted;
        auto read = file.readAt(from, wanted);
        if (!read.ok())
            return std::nullopt;
        std::string& block = read.value();
        if (block.size() < wanted) {
            lines = LastLines(maxLines);
            end = from + block.size();
        }
        // Whether a line feed at the front ends a line is for the block before to say.
        const bool isCutOff = from > begin && block.starts_with('\n');
        if (isCutOff)
            block.erase(0, 1);
        lines.takeBefore(std::move(block));
        at = from + (isCutOff ? 1 : 0);
    }
    return Tail{lines.take(), end};
}

}  // namespace

LogTail::LogTail(const FileSystem& files, std::string path, std::size_t maxLines)
    : files_(&files), path_(std::move(path)), maxLines_(maxLines) {
    assert(maxLines > 0);
}

LogLines LogTail::reload() {
    offset_ = 0;
    const auto opened = files_->openForReading(path_);
    if (!opened.ok())
        return {};
    std::optional<Tail> tail = readTail(*opened.value(), 0, maxLines_);
    if (!tail)
        return {};
    offset_ = tail->end;
    return std::move(tail->lines);
}

LogTail::Update LogTail::readNew() {
    const auto opened = files_->openForReading(path_);
    if (!opened.ok())
        return {};
    const auto end = opened.value()->sizeBytes();
    if (!end.ok())
        return {};
    if (end.value() < offset_)
        return {Update::Kind::reset, reload()};
    if (end.value() == offset_)
        return {};
    std::optional<Tail> tail = readTail(*opened.value(), offset_, maxLines_);
    if (!tail)
        return {};
    offset_ = end.value();
    return {Update::Kind::append, std::move(tail->lines)};
}

LogLines LogTail::split(std::string bytes) {
    LastLines lines(std::numeric_limits<std::size_t>::max());
    lines.takeBefore(std::move(bytes));
    return lines.take();
}

}  // namespace valdorn
