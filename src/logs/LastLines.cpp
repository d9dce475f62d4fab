#include "logs/LastLines.h"

#include <cstring>
#include <utility>

#include "logs/Utf8.h"

namespace valdorn {

namespace {

// Where the line feeds stand that end lines. Looked for forwards: the standard library searches
// fast in this direction only.
std::vector<std::size_t> lineEnds(std::string_view block) {
    std::vector<std::size_t> ends;
    for (std::size_t at = 0; at < block.size(); ++at) {
        const void* const found = std::memchr(block.data() + at, '\n', block.size() - at);
        if (found == nullptr)
            break;
        at = static_cast<std::size_t>(static_cast<const char*>(found) - block.data());
        if (at == 0 || block[at - 1] != '\r')
            ends.push_back(at);
    }
    return ends;
}

}  // namespace

void LastLines::takeBefore(std::string_view block) {
    const std::vector<std::size_t> ends = lineEnds(block);
    for (auto end = ends.rbegin(); end != ends.rend() && !isFull(); ++end) {
        addLine(block.substr(*end + 1));
        block = block.substr(0, *end);
    }
    if (!isFull() && !block.empty())
        pieces_.emplace_back(block);
}

void LastLines::addLine(std::string_view beginning) {
    const bool isLast = std::exchange(isAtEnd_, false);
    if (isLast && beginning.empty() && pieces_.empty())
        return;
    std::string line(beginning);
    for (; !pieces_.empty(); pieces_.pop_back())
        line += pieces_.back();
    backwards_.push_back(decodedUtf8(std::move(line)));
}

std::vector<std::string> LastLines::take() {
    if (!isFull())
        addLine({});
    isAtEnd_ = true;
    std::vector<std::string> lines(std::make_move_iterator(backwards_.rbegin()),
                                   std::make_move_iterator(backwards_.rend()));
    backwards_.clear();
    return lines;
}

}  // namespace valdorn
