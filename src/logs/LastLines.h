#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// Cuts a text into lines from its end backwards, as it comes in blocks, and keeps the last of them.
//
// A line feed ends a line unless a carriage return stands right before it: such a pair stays in its
// line, as does any other carriage return. What follows the last line feed is a line, too, unless it
// is empty. Bytes come out as well-formed UTF-8. Memory grows with the kept lines only. A value; one
// thread at a time.
class LastLines {
public:
    // At least one line is kept.
    explicit LastLines(std::size_t maxLines) : maxLines_(maxLines) {}

    // Takes in what stands right before the bytes taken so far. A block must not begin with a line
    // feed unless the text does: it would be cut off from a carriage return before it.
    void takeBefore(std::string_view block);

    // True when no more blocks are needed.
    bool isFull() const { return backwards_.size() >= maxLines_; }

    // The lines in the order of the text, when it has been taken in up to its beginning or this is
    // full. Afterwards this is empty.
    std::vector<std::string> take();

private:
    void addLine(std::string_view beginning);

    std::size_t maxLines_;
    std::vector<std::string> backwards_;  // the lines, the last one first
    std::vector<std::string> pieces_;  // of the line whose beginning has not come, the last first
    bool isAtEnd_ = true;              // nothing has been cut off yet
};

}  // namespace valdorn
