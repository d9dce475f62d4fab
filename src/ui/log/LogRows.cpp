#include "ui/log/LogRows.h"

#include <algorithm>
#include <utility>

#include "logs/LogTailer.h"

namespace valdorn {

void LogRows::setFont(const QFont& font) {
    wrap_ = LineWrap(font);
    rowCounts_.clear();
    measure();
}

void LogRows::setWidth(int pixels) {
    if (pixels == width_)
        return;
    width_ = pixels;
    rowCounts_.clear();
    measure();
}

LogLines LogRows::setLines(LogLines lines) {
    LogLines before = std::exchange(lines_, std::move(lines));
    ++revision_;
    measureNew(before);
    forgetLostLines();
    return before;
}

std::int64_t LogRows::height() const {
    const std::int64_t withSpacing = top(lines_.size());
    return withSpacing - (lines_.empty() ? 0 : spacingPixels) + paddingPixels;
}

std::int64_t LogRows::top(std::size_t line) const {
    return paddingPixels + rowsBefore_[line] * wrap_.rowHeight() +
           static_cast<std::int64_t>(line) * spacingPixels;
}

std::size_t LogRows::lineAt(std::int64_t y) const {
    std::size_t first = 0;
    std::size_t last = lines_.size() - 1;
    while (first < last) {
        const std::size_t middle = last - (last - first) / 2;
        if (top(middle) <= y)
            first = middle;
        else
            last = middle - 1;
    }
    return first;
}

LogPosition LogRows::end() const {
    if (lines_.empty())
        return {};
    return {lines_.size() - 1, shown(lines_.size() - 1).size()};
}

qreal LogRows::innerWidth() const {
    return std::max<qreal>(width_ - 2 * paddingPixels, wrap_.columnWidth());
}

void LogRows::measure() {
    rowsBefore_.assign(1, 0);
    rowsBefore_.reserve(lines_.size() + 1);
    for (const LogLine& line : lines_)
        rowsBefore_.push_back(rowsBefore_.back() + rowCount(line));
}

// Lines that followed each other before, as nearly all do in a log that grows, are taken over one
// after the other; looking each up took as long as painting.
void LogRows::measureNew(const LogLines& before) {
    const std::vector<std::int64_t> placesBefore = std::exchange(rowsBefore_, {0});
    rowsBefore_.reserve(lines_.size() + 1);
    auto next =
        lines_.empty() ? before.end() : std::find(before.begin(), before.end(), lines_.front());
    for (const LogLine& line : lines_) {
        const bool isKnown = next != before.end() && *next == line;
        const auto place = placesBefore.begin() + (next - before.begin());
        rowsBefore_.push_back(rowsBefore_.back() +
                              (isKnown ? *(place + 1) - *place : rowCount(line)));
        next += isKnown ? 1 : 0;
    }
}

int LogRows::rowCount(const LogLine& line) {
    RowCount& known = rowCounts_[line.get()];
    // Another line may stand where a lost one stood.
    if (known.line.expired())
        known = {line, static_cast<int>(rowStarts(LineWrap::shown(*line)).size())};
    return known.rows;
}

// Lines that were filtered out may come back, and stay known until they are gone.
void LogRows::forgetLostLines() {
    if (rowCounts_.size() > 2 * LogTailer::maxLines)
        std::erase_if(rowCounts_, [](const auto& known) { return known.second.line.expired(); });
}

}  // namespace valdorn
