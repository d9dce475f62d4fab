#include "ui/log/LogPainter.h"

#include <QPainter>
#include <QPalette>
#include <algorithm>

#include "logs/LineColor.h"
#include "ui/SystemPalette.h"
#include "ui/log/LogLineLayouts.h"

namespace valdorn {

LogPainter::LogPainter(QPainter& painter, const QPalette& palette, const LogRows& rows,
                       LogLineLayouts& layouts, const LogSelection& selection)
    : painter_(painter),
      palette_(palette),
      rows_(rows),
      layouts_(layouts),
      selection_(selection),
      warning_(SystemPalette::textOnBase(SystemColor::orange, palette)),
      error_(SystemPalette::textOnBase(SystemColor::red, palette)) {}

void LogPainter::draw(const QRect& area, std::int64_t scrolled) const {
    if (rows_.lines().empty())
        return;
    const std::int64_t bottom = scrolled + area.bottom();
    for (std::size_t line = rows_.lineAt(scrolled + area.top());
         line < rows_.lines().size() && rows_.top(line) <= bottom; ++line)
        drawLine(line, area, scrolled);
}

QColor LogPainter::colorOf(std::string_view line) const {
    const auto color = lineColor(line);
    if (!color)
        return palette_.color(QPalette::Text);
    return color == SystemColor::red ? error_ : warning_;
}

void LogPainter::drawLine(std::size_t number, const QRect& area, std::int64_t scrolled) const {
    LogLineLayouts::Line& line = layouts_.line(rows_, number);
    const int rowHeight = rows_.wrap().rowHeight();
    const std::int64_t top = rows_.top(number) - scrolled;
    const QColor color = colorOf(*rows_.lines()[number]);
    const auto first =
        static_cast<std::size_t>(std::max<std::int64_t>((area.top() - top) / rowHeight, 0));
    for (std::size_t row = first; row < line.rows(); ++row) {
        const std::int64_t y = top + static_cast<std::int64_t>(row) * rowHeight;
        if (y > area.bottom())
            break;
        LogRowLayout& layout = line.layout(row, rows_.wrap());
        const QPointF place(LogRows::paddingPixels, static_cast<qreal>(y));
        selectIn(layout, {number, line.begin(row)}, {number, line.end(row)});
        if (line.isLast(row) && isLineEndSelected({number, line.end(row)}))
            painter_.fillRect(QRectF(place.x() + layout.width(), place.y(),
                                     rows_.wrap().columnWidth() / 2, rowHeight),
                              palette_.brush(QPalette::Highlight));
        layout.draw(painter_, place, color);
    }
}

void LogPainter::selectIn(LogRowLayout& row, LogPosition begin, LogPosition end) const {
    const LogPosition from = std::max(selection_.first(), begin);
    const LogPosition to = std::min(selection_.last(), end);
    if (from < to)
        row.select(from.at - begin.at, to.at - begin.at, palette_);
    else
        row.selectNothing();
}

bool LogPainter::isLineEndSelected(LogPosition end) const {
    return !(end < selection_.first()) && selection_.last().line > end.line;
}

}  // namespace valdorn
