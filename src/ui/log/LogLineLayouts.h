#pragma once

#include <QString>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include "ui/log/LogRowLayout.h"
#include "ui/log/LogRows.h"

namespace valdorn {

// The lines that were drawn last as they were laid out, for drawing them again: of a log that grows
// line by line all but one stand there already, and laying text out costs as much as drawing it.
// Main thread only.
class LogLineLayouts {
public:
    // One line. Its rows are laid out when they are first asked for.
    class Line {
    public:
        Line(const LogRows& rows, std::size_t number);

        std::size_t rows() const { return starts_.size(); }
        // Where a row begins and ends in what is shown of the line.
        qsizetype begin(std::size_t row) const { return starts_[row]; }
        qsizetype end(std::size_t row) const {
            return row + 1 < starts_.size() ? starts_[row + 1] : shown_.size();
        }
        bool isLast(std::size_t row) const { return end(row) == shown_.size(); }
        LogRowLayout& layout(std::size_t row, const LineWrap& wrap);

    private:
        friend class LogLineLayouts;

        LogLine::weak_type line_;  // it may be gone, and another stand in its place
        bool isUsed_ = true;
        QString shown_;
        std::vector<qsizetype> starts_;
        std::vector<std::unique_ptr<LogRowLayout>> layouts_;  // null until asked for
    };

    // A line of `rows`, whose font and width are the same as in earlier calls since the last clear().
    // Valid until the next call of a function that is not const.
    Line& line(const LogRows& rows, std::size_t number);

    // Lets go of all that was not asked for since the last call.
    void forgetUnused();
    void clear() { lines_.clear(); }

    std::size_t size() const { return lines_.size(); }

private:
    std::unordered_map<const LogLine::element_type*, Line> lines_;
};

}  // namespace valdorn
