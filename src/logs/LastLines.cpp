#include "logs/LastLines.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "text/Utf8.h"

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

std::string_view LastLines::keep(std::string text) {
    return kept_.texts.emplace_back(std::move(text));
}

void LastLines::takeBefore(std::string block) {
    const std::vector<std::size_t> ends = lineEnds(block);
    if (ends.empty()) {
        if (!block.empty())
            pieces_.push_back(std::move(block));
        return;
    }
    std::string_view rest = keep(std::move(block));
    // A character that is cut off at the block's edge makes it seem ill-formed: then each line is
    // looked at by itself.
    const Bytes bytes = isWellFormedUtf8(rest) ? Bytes::wellFormed : Bytes::unknown;
    for (auto end = ends.rbegin(); end != ends.rend() && !isFull(); ++end) {
        const std::string_view beginning = rest.substr(*end + 1);
        rest.remove_suffix(rest.size() - *end);
        if (bytes == Bytes::wellFormed && end != ends.rbegin())
            kept_.lines.push_back(beginning);  // as nearly all lines are: nothing more to be done
        else
            addLine(beginning, bytes);
    }
    if (!isFull())
        pieces_.emplace_back(rest);
}

void LastLines::addLine(std::string_view beginning, Bytes bytes) {
    const bool isLast = std::exchange(isAtEnd_, false);
    if (isLast && beginning.empty() && pieces_.empty())
        return;
    std::string_view line = beginning;
    if (!pieces_.empty()) {
        std::string joined(beginning);
        for (; !pieces_.empty(); pieces_.pop_back())
            joined += pieces_.back();
        line = keep(std::move(joined));
        bytes = Bytes::unknown;
    }
    if (bytes == Bytes::unknown && !isWellFormedUtf8(line))
        line = keep(decodedUtf8(line));
    kept_.lines.push_back(line);
}

LogLines LastLines::take() {
    if (!isFull())
        addLine({}, Bytes::wellFormed);
    const auto shared = std::make_shared<const Kept>(std::move(kept_));
    LogLines::List lines;
    lines.reserve(shared->lines.size());
    for (auto line = shared->lines.rbegin(); line != shared->lines.rend(); ++line)
        lines.emplace_back(shared, &*line);
    return lines;
}

}  // namespace valdorn
