#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

class AppendHandle;

// Complete lines, without their line feeds, cut from one chunk of output. A plain value.
class LineBatch {
public:
    LineBatch() = default;

    // `text` holds the lines one after the other; `ends` the offset of the line feed behind each.
    LineBatch(std::string text, std::vector<std::size_t> ends)
        : text_(std::move(text)), ends_(std::move(ends)) {}

    std::size_t size() const { return ends_.size(); }
    bool empty() const { return ends_.empty(); }

    // The line of that index; valid as long as the batch is.
    std::string_view operator[](std::size_t index) const {
        const std::size_t start = index == 0 ? 0 : ends_[index - 1] + 1;
        return std::string_view(text_).substr(start, ends_[index] - start);
    }

private:
    std::string text_;
    std::vector<std::size_t> ends_;
};

// What the reader thread needs of one launch of a runner: the incomplete line and the open log.
//
// It belongs to that launch alone, so a later launch cannot get in its way. ingest() runs on the
// reader thread; closeLog() on any thread once the launch's exit has been told (no output follows).
class RunnerOutput {
public:
    // An incomplete line longer than this is cut to its last `keptTailCharacters`, so that a child
    // that prints no line ends cannot fill the memory.
    static constexpr std::size_t maxLineBytes = 64000;
    static constexpr std::size_t keptTailCharacters = 8000;

    // Owns the log; without one, lines are cut and handed on but not kept.
    explicit RunnerOutput(std::unique_ptr<AppendHandle> log);
    ~RunnerOutput();
    RunnerOutput(const RunnerOutput&) = delete;
    RunnerOutput& operator=(const RunnerOutput&) = delete;

    // Takes the next chunk of output, writes the meaningful lines that it completes to the log and
    // returns all that it completes. A chunk that is not UTF-8 is dropped whole. A carriage return
    // and a line feed together are one character and no line end. A log that cannot be written
    // loses those lines and nothing else.
    LineBatch ingest(std::string_view chunk);

    // Closes the log.
    void closeLog();

    // The output after the last line end.
    const std::string& lineBuffer() const { return lineBuffer_; }

private:
    LineBatch cutLines(std::size_t searchFrom);
    void keep(const LineBatch& lines);

    std::unique_ptr<AppendHandle> logHandle_;
    std::string lineBuffer_;
};

}  // namespace valdorn
