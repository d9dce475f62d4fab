#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

class AppendHandle;

// Complete lines, without their line feeds, that a chunk of output completes.
using LineBatch = std::span<const std::string_view>;

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
    // returns all that it completes; they are valid until the next call and as long as the chunk is,
    // of which they are parts: nothing is copied but what two chunks have of one line. A chunk that
    // is not UTF-8 is dropped whole. A carriage return and a line feed together are one character
    // and no line end. A log that cannot be written loses those lines and nothing else.
    LineBatch ingest(std::string_view chunk);

    // Closes the log.
    void closeLog();

    // The output after the last line end.
    const std::string& lineBuffer() const { return lineBuffer_; }

private:
    void cut(std::string_view chunk);
    bool isLineEnd(std::string_view chunk, std::size_t lineFeed) const;
    std::string_view completed(std::string_view end);
    void shorten();
    void keepLines();

    std::unique_ptr<AppendHandle> logHandle_;
    std::string lineBuffer_;
    // What ingest() works with; their memory serves every chunk.
    std::string firstLine_;  // of a chunk, when an earlier one began it
    std::vector<std::string_view> lines_;
    std::string kept_;
};

}  // namespace valdorn
