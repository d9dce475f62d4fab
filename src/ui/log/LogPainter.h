#pragma once

#include <QColor>
#include <QRect>
#include <cstdint>
#include <string_view>

#include "ui/log/LogRows.h"
#include "ui/log/LogSelection.h"

class QPainter;
class QPalette;

namespace valdorn {

class LogLineLayouts;
class LogRowLayout;

// Draws the visible lines of a log in the colours of their levels, and what is selected of them. For
// one painting; what it is made with outlives it. Main thread only.
class LogPainter {
public:
    LogPainter(QPainter& painter, const QPalette& palette, const LogRows& rows,
               LogLineLayouts& layouts, const LogSelection& selection);

    // Draws what stands in that part of the view when all is scrolled up by so many pixels.
    void draw(const QRect& area, std::int64_t scrolled) const;

private:
    QColor colorOf(std::string_view line) const;
    void drawLine(std::size_t number, const QRect& area, std::int64_t scrolled) const;
    void selectIn(LogRowLayout& row, LogPosition begin, LogPosition end) const;
    bool isLineEndSelected(LogPosition end) const;

    QPainter& painter_;
    const QPalette& palette_;
    const LogRows& rows_;
    LogLineLayouts& layouts_;
    const LogSelection& selection_;
    const QColor warning_;
    const QColor error_;
};

}  // namespace valdorn
