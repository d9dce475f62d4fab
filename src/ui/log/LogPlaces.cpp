#include "ui/log/LogPlaces.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <utility>

#include "ui/log/LogRowLayout.h"

namespace valdorn::LogPlaces {

namespace {

qsizetype boundary(QTextBoundaryFinder::BoundaryType type, const QString& text, qsizetype at,
                   bool forwards) {
    QTextBoundaryFinder finder(type, text);
    finder.setPosition(at);
    const qsizetype found = forwards ? finder.toNextBoundary() : finder.toPreviousBoundary();
    if (found >= 0)
        return found;
    return forwards ? text.size() : 0;
}

LogPosition stepped(const LogRows& rows, LogPosition position,
                    QTextBoundaryFinder::BoundaryType type, bool forwards) {
    const QString text = rows.shown(position.line);
    if (forwards && position.at >= text.size()) {
        const bool isLast = position.line + 1 == rows.lines().size();
        return isLast ? position : LogPosition{position.line + 1, 0};
    }
    if (!forwards && position.at == 0) {
        if (position.line == 0)
            return position;
        return {position.line - 1, rows.shown(position.line - 1).size()};
    }
    return {position.line, boundary(type, text, position.at, forwards)};
}

}  // namespace

Row rowOf(const LogRows& rows, LogPosition position) {
    Row row;
    row.shown = rows.shown(position.line);
    const std::vector<qsizetype> starts = rows.rowStarts(row.shown);
    const auto next = std::upper_bound(starts.begin(), starts.end(), position.at);
    row.begin = *(next - 1);
    row.end = next == starts.end() ? row.shown.size() : *next;
    row.top = rows.top(position.line) + (next - starts.begin() - 1) * rows.wrap().rowHeight();
    return row;
}

qreal xOf(const LogRows& rows, LogPosition position) {
    const Row row = rowOf(rows, position);
    const LogRowLayout layout(rows.wrap(), row.shown, row.begin, row.end);
    return LogRows::paddingPixels + layout.xAt(position.at - row.begin);
}

LogPosition positionAt(const LogRows& rows, qreal x, std::int64_t y) {
    const std::size_t line = rows.lineAt(y);
    const QString shown = rows.shown(line);
    const std::vector<qsizetype> starts = rows.rowStarts(shown);
    const std::int64_t last = static_cast<std::int64_t>(starts.size()) - 1;
    const auto number = static_cast<std::size_t>(
        std::clamp<std::int64_t>((y - rows.top(line)) / rows.wrap().rowHeight(), 0, last));
    const qsizetype end = number + 1 < starts.size() ? starts[number + 1] : shown.size();
    const LogRowLayout layout(rows.wrap(), shown, starts[number], end);
    qsizetype at = starts[number] + layout.positionAt(x - LogRows::paddingPixels);
    // The end of a wrapped row is the beginning of the next, which is another place on the screen.
    if (at == end && number + 1 < starts.size())
        at = boundary(QTextBoundaryFinder::Grapheme, shown, end, false);
    return {line, at};
}

std::pair<LogPosition, LogPosition> unitAt(const LogRows& rows, LogPosition position,
                                           LogUnit unit) {
    const QString text = rows.shown(position.line);
    if (unit == LogUnit::character)
        return {position, position};
    if (unit == LogUnit::line)
        return {{position.line, 0}, {position.line, text.size()}};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    finder.setPosition(position.at);
    const qsizetype begin = finder.isAtBoundary() && position.at < text.size()
                                ? position.at
                                : std::max<qsizetype>(finder.toPreviousBoundary(), 0);
    return {{position.line, begin},
            {position.line, boundary(QTextBoundaryFinder::Word, text, begin, true)}};
}

LogPosition moved(const LogRows& rows, LogPosition position, LogMotion motion, qreal x,
                  int pagePixels) {
    const Row row = rowOf(rows, position);
    const int rowHeight = rows.wrap().rowHeight();
    switch (motion) {
        case LogMotion::left:
        case LogMotion::right:
            return stepped(rows, position, QTextBoundaryFinder::Grapheme,
                           motion == LogMotion::right);
        case LogMotion::wordLeft:
        case LogMotion::wordRight:
            return stepped(rows, position, QTextBoundaryFinder::Word,
                           motion == LogMotion::wordRight);
        case LogMotion::up:
            return positionAt(rows, x, row.top - LogRows::spacingPixels - 1);
        case LogMotion::down:
            return positionAt(rows, x, row.top + rowHeight + LogRows::spacingPixels);
        case LogMotion::pageUp:
            return positionAt(rows, x, row.top - pagePixels);
        case LogMotion::pageDown:
            return positionAt(rows, x, row.top + pagePixels);
        case LogMotion::rowStart:
            return {position.line, row.begin};
        case LogMotion::rowEnd:
            return row.end == row.shown.size()
                       ? LogPosition{position.line, row.end}
                       : LogPosition{position.line, boundary(QTextBoundaryFinder::Grapheme,
                                                             row.shown, row.end, false)};
        case LogMotion::start:
            return {};
        case LogMotion::end:
            return rows.end();
    }
    return position;
}

}  // namespace valdorn::LogPlaces
