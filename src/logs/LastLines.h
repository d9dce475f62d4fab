#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "logs/LogLine.h"

namespace valdorn {

// Cuts a text into lines from its end backwards, as it comes in blocks, and keeps the last of them.
//
// A line feed ends a line unless a carriage return stands right before it: such a pair stays in its
// line, as does any other carriage return. What follows the last line feed is a line, too, unless it
// is empty. Bytes come out as well-formed UTF-8. Memory grows with the kept lines and a block; lines
// are where they were read and copied only when they reach over blocks. Not to be copied: what a copy
// kept would look into what this one holds. A new one may be assigned, to begin anew. One thread at a
// time.
class LastLines {
public:
    // At least one line is kept.
    explicit LastLines(std::size_t maxLines) : maxLines_(maxLines) {}
    LastLines(const LastLines&) = delete;
    LastLines& operator=(const LastLines&) = delete;
    LastLines& operator=(LastLines&&) noexcept = default;
    ~LastLines() = default;

    // Takes in what stands right before the bytes taken so far. A block must not begin with a line
    // feed unless the text does: it would be cut off from a carriage return before it.
    void takeBefore(std::string block);

    // True when no more blocks are needed.
    bool isFull() const { return kept_.lines.size() >= maxLines_; }

    // The lines in the order of the text, when it has been taken in up to its beginning or this is
    // full. The last call.
    LogLines take();

private:
    // What the lines share.
    struct Kept {
        std::deque<std::string> texts;        // what the lines look at stays where it is
        std::vector<std::string_view> lines;  // the last one first
    };
    enum class Bytes { wellFormed, unknown };

    void addLine(std::string_view beginning, Bytes bytes);
    std::string_view keep(std::string text);

    std::size_t maxLines_;
    Kept kept_;
    std::vector<std::string> pieces_;  // of the line whose beginning has not come, the last first
    bool isAtEnd_ = true;              // nothing has been cut off yet
};

}  // namespace valdorn
