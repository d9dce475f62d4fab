#include "ui/log/LogRowLayout.h"

#include <QPainter>
#include <QPalette>
#include <QTextOption>

namespace valdorn {

namespace {

// Without the line end that closes a row inside a line.
QString rowText(const QString& shown, qsizetype begin, qsizetype end) {
    QString text = shown.mid(begin, end - begin);
    if (text.endsWith(QLatin1String("\r\n")))
        text.chop(2);
    return text;
}

}  // namespace

LogRowLayout::LogRowLayout(const LineWrap& wrap, const QString& shown, qsizetype begin,
                           qsizetype end)
    : layout_(rowText(shown, begin, end), wrap.font()), ascent_(wrap.ascent()) {
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight);
    option.setTabStopDistance(wrap.columnWidth() * LineWrap::tabColumns);
    layout_.setTextOption(option);
    layout_.setCacheEnabled(true);  // or the text is shaped once for its width and again to draw it
    layout_.beginLayout();
    layout_.createLine();
    layout_.endLayout();
}

void LogRowLayout::select(qsizetype from, qsizetype to, const QPalette& palette) {
    QTextLayout::FormatRange selected;
    selected.start = static_cast<int>(from);
    selected.length = static_cast<int>(to - from);
    selected.format.setBackground(palette.brush(QPalette::Highlight));
    selected.format.setForeground(palette.brush(QPalette::HighlightedText));
    selected_ = {selected};
}

void LogRowLayout::draw(QPainter& painter, QPointF topLeft, const QColor& color) const {
    painter.setPen(color);
    layout_.draw(&painter, topLeft + QPointF(0, ascent_ - layout_.lineAt(0).ascent()), selected_);
}

qreal LogRowLayout::xAt(qsizetype position) const {
    return layout_.lineAt(0).cursorToX(static_cast<int>(position));
}

qsizetype LogRowLayout::positionAt(qreal x) const {
    return layout_.lineAt(0).xToCursor(x);
}

qreal LogRowLayout::width() const {
    return layout_.lineAt(0).naturalTextWidth();
}

}  // namespace valdorn
