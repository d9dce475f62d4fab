#include "ui/log/LogLineLayouts.h"

#include <iterator>
#include <utility>

namespace valdorn {

LogLineLayouts::Line::Line(const LogRows& rows, std::size_t number)
    : line_(rows.lines()[number]),
      shown_(rows.shown(number)),
      starts_(rows.rowStarts(shown_)),
      layouts_(starts_.size()) {}

LogRowLayout& LogLineLayouts::Line::layout(std::size_t row, const LineWrap& wrap) {
    std::unique_ptr<LogRowLayout>& layout = layouts_[row];
    if (!layout)
        layout = std::make_unique<LogRowLayout>(wrap, shown_, begin(row), end(row));
    return *layout;
}

LogLineLayouts::Line& LogLineLayouts::line(const LogRows& rows, std::size_t number) {
    const auto* const key = rows.lines()[number].get();
    auto known = lines_.find(key);
    if (known == lines_.end())
        known = lines_.emplace(key, Line(rows, number)).first;
    else if (known->second.line_.expired())
        known->second = Line(rows, number);
    known->second.isUsed_ = true;
    return known->second;
}

void LogLineLayouts::forgetUnused() {
    for (auto line = lines_.begin(); line != lines_.end();) {
        const bool isUsed = std::exchange(line->second.isUsed_, false);
        line = isUsed ? std::next(line) : lines_.erase(line);
    }
}

}  // namespace valdorn
