#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "logs/LogLine.h"

namespace valdorn {

class FileSystem;

// Reads a growing text file piece by piece, by byte offset. A value; one thread at a time.
//
// What it gives is what reading everything would give, cut down to the last lines; what it reads is
// no more than those lines need, found by searching backwards from the end. Memory grows with those
// lines only.
//
// There is no carry-over of an unfinished line: its beginning and its rest are two lines. A file
// that becomes shorter than what was read is taken as a new one; one that is replaced by a longer
// one is not noticed. Errors show as no lines.
class LogTail {
public:
    // What one look at the file has brought.
    struct Update {
        enum class Kind {
            append,  // the lines follow those delivered before; there may be none
            reset,   // the file was shorter than expected: the lines replace everything before
        };
        Kind kind = Kind::append;
        LogLines lines;
    };

    // `files` outlives every copy. Of each result only the last `maxLines` lines (at least 1) are
    // wanted.
    LogTail(const FileSystem& files, std::string path, std::size_t maxLines);

    const std::string& path() const { return path_; }

    // How far the file has been consumed, in bytes; 0 at first.
    std::uint64_t offset() const { return offset_; }

    // Reads the file from its beginning and moves the offset to its end. A file that cannot be read
    // counts as empty.
    LogLines reload();

    // Reads what was appended since. The offset moves to the size that was measured first: what
    // arrives between measuring and reading is delivered now and once more by the next call, as the
    // offset moves only over what was measured: a line twice is better than a line lost. After an
    // error the offset stays.
    Update readNew();

    // The lines of a text: cut at every line feed but those of CR LF pairs, which stay in the line;
    // one empty piece at the end is dropped. Bytes that are no UTF-8 come out as U+FFFD, one for
    // each maximal part of a sequence.
    static LogLines split(std::string bytes);

private:
    const FileSystem* files_;
    std::string path_;
    std::size_t maxLines_;
    std::uint64_t offset_ = 0;
};

}  // namespace valdorn
