#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace valdorn {

// One line of a log, shared and never changed (well-formed UTF-8, without its line end). The same
// object is the same line: what has become of a list can be told by comparing pointers.
//
// A line keeps in memory what was read together with it, so thousands of them cost one allocation
// for each 64 KiB of text.
using LogLine = std::shared_ptr<const std::string_view>;

// A list of lines that is never changed, only replaced by another. Copies share it: one goes through
// several hands for each batch of a growing log, and to copy thousands of lines each time, which all
// count their holders, would cost more than to draw what is seen of them.
class LogLines {
public:
    using List = std::vector<LogLine>;

    LogLines() = default;
    LogLines(List lines) : lines_(std::make_shared<const List>(std::move(lines))) {}
    LogLines(std::initializer_list<LogLine> lines) : LogLines(List(lines)) {}

    List::const_iterator begin() const { return list().begin(); }
    List::const_iterator end() const { return list().end(); }
    std::size_t size() const { return list().size(); }
    bool empty() const { return list().empty(); }
    const LogLine& operator[](std::size_t index) const { return list()[index]; }
    const LogLine& front() const { return list().front(); }
    const LogLine& back() const { return list().back(); }

    // Whether the same lines stand there, in the same order.
    bool operator==(const LogLines& other) const {
        return lines_ == other.lines_ || list() == other.list();
    }

private:
    const List& list() const {
        static const List none;
        return lines_ ? *lines_ : none;
    }

    std::shared_ptr<const List> lines_;  // null for none
};

}  // namespace valdorn
