#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "logs/LogLine.h"
#include "ui/log/LineWrap.h"

namespace valdorn {

// A place in the text: before the unit `at` of what is shown of a line.
struct LogPosition {
    std::size_t line = 0;
    qsizetype at = 0;

    bool operator==(const LogPosition&) const = default;
    bool operator<(const LogPosition& other) const {
        return line < other.line || (line == other.line && at < other.at);
    }
};

// Lines of a log, one below the other, each broken into rows that fit a width: where everything is.
// Vertical places are device-independent pixels from the top of all. Main thread only.
class LogRows {
public:
    static constexpr int paddingPixels = 6;  // around all
    static constexpr int spacingPixels = 1;  // between lines

    explicit LogRows(const QFont& font) : wrap_(font) {}

    // The lines are laid out anew, at that width of all.
    void setFont(const QFont& font);
    void setWidth(int pixels);
    // Gives back the lines before. Only lines that have not been there are measured.
    LogLines setLines(LogLines lines);

    const LogLines& lines() const { return lines_; }
    // Another number after each change of the lines.
    std::uint64_t revision() const { return revision_; }
    const LineWrap& wrap() const { return wrap_; }
    std::int64_t height() const;

    // Where the line begins; for the number of lines, where the next would.
    std::int64_t top(std::size_t line) const;
    // The line at that height, or the nearest; there must be one.
    std::size_t lineAt(std::int64_t y) const;

    // What is shown of a line, and where its rows begin.
    QString shown(std::size_t line) const { return LineWrap::shown(*lines_[line]); }
    std::vector<qsizetype> rowStarts(const QString& shown) const {
        return wrap_.rowStarts(shown, innerWidth());
    }

    // The end of all.
    LogPosition end() const;

private:
    // Of a line that may be gone, which this does not hold on to.
    struct RowCount {
        LogLine::weak_type line;
        int rows = 0;
    };

    qreal innerWidth() const;
    void measure();
    // The same where `before` were the lines, and the places those of them.
    void measureNew(const LogLines& before);
    int rowCount(const LogLine& line);
    void forgetLostLines();

    LineWrap wrap_;
    int width_ = 0;
    LogLines lines_;
    std::uint64_t revision_ = 0;
    std::vector<std::int64_t> rowsBefore_{0};  // how many rows stand above each line
    std::unordered_map<const LogLine::element_type*, RowCount> rowCounts_;  // at this width
};

}  // namespace valdorn
