#include "ui/log/LogPainter.h"

#include <QPainter>
#include <QPalette>
#include <algorithm>

#include "logs/LineColor.h"
#include "ui/SystemPalette.h"
#include "ui/log/LogRowLayout.h"

namespace valdorn {

LogPainter::LogPainter(QPainter& painter, const QPalette& palette, const LogRows& rows,
                       const LogSelection& selection)
    : painter_(painter),
      palette_(palette),
      rows_(rows),
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

void LogPainter::drawLine(std::size_t line, const QRect& area, std::int64_t scrolled) const {
    const QString shown = rows_.shown(line);
    const std::vector<qsizetype> starts = rows_.rowStarts(shown);
    const int rowHeight = rows_.wrap().rowHeight();
    const std::int64_t top = rows_.top(line) - scrolled;
    const QColor color = colorOf(*rows_.lines()[line]);
    const auto first =
        static_cast<std::size_t>(std::max<std::int64_t>((area.top() - top) / rowHeight, 0));
    for (std::size_t number = first; number < starts.size(); ++number) {
        const std::int64_t y = top + static_cast<std::int64_t>(number) * rowHeight;
        if (y > area.bottom())
            break;
        const qsizetype end = number + 1 < starts.size() ? starts[number + 1] : shown.size();
        LogRowLayout row(rows_.wrap(), shown, starts[number], end);
        const QPointF place(LogRows::paddingPixels, static_cast<qreal>(y));
        selectIn(row, {line, starts[number]}, {line, end});
        if (end == shown.size() && isLineEndSelected({line, end}))
            painter_.fillRect(QRectF(place.x() + row.width(), place.y(),
                                     rows_.wrap().columnWidth() / 2, rowHeight),
                              palette_.brush(QPalette::Highlight));
        row.draw(painter_, place, color);
    }
}

void LogPainter::selectIn(LogRowLayout& row, LogPosition begin, LogPosition end) const {
    const LogPosition from = std::max(selection_.first(), begin);
    const LogPosition to = std::min(selection_.last(), end);
    if (from < to)
        row.select(from.at - begin.at, to.at - begin.at, palette_);
}

bool LogPainter::isLineEndSelected(LogPosition end) const {
    return !(end < selection_.first()) && selection_.last().line > end.line;
}

}  // namespace valdorn
