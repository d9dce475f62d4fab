#include "ui/WrappedLabel.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QTextOption>
#include <QToolTip>

#include "ui/PlainText.h"

namespace valdorn {

namespace {

// A column narrower than that is no text any more.
constexpr int leastCharacters = 12;

}  // namespace

WrappedLabel::WrappedLabel(TextStyle style, int mostLines)
    : StyledLabel(style), mostLines_(mostLines) {
    setWordWrap(true);  // for its layout: the height depends on the width
}

void WrappedLabel::setText(const QString& text) {
    StyledLabel::setText(PlainText::shortened(text));
}

QStringList WrappedLabel::linesIn(int width) const {
    const QString whole = PlainText::oneLine(text());
    QTextLayout layout(whole, font());
    QTextOption option(Qt::AlignLeading);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        const int start = line.textStart();
        const int end = start + line.textLength();
        if (lines.size() + 1 == mostLines_ && end < whole.size()) {
            lines += fontMetrics().elidedText(whole.mid(start), Qt::ElideRight, width);
            break;
        }
        lines += whole.mid(start, end - start).trimmed();
    }
    layout.endLayout();
    return lines;
}

QSize WrappedLabel::sizeHint() const {
    ensurePolished();
    const int width = fontMetrics().horizontalAdvance(PlainText::oneLine(text()));
    return {width, heightForWidth(width)};
}

QSize WrappedLabel::minimumSizeHint() const {
    ensurePolished();
    return {qMin(fontMetrics().averageCharWidth() * leastCharacters, sizeHint().width()),
            fontMetrics().height()};
}

int WrappedLabel::heightForWidth(int width) const {
    return static_cast<int>(qMax<qsizetype>(linesIn(width).size(), 1)) * fontMetrics().height();
}

// The tooltip is made when it is asked for: only then is it known whether something is left out.
bool WrappedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return StyledLabel::event(event);
    const QStringList lines = shownLines();
    if (lines.size() == mostLines_ && !PlainText::oneLine(text()).endsWith(lines.back()))
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), PlainText::toolTip(text()),
                           this);
    else
        QToolTip::hideText();
    return true;
}

void WrappedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QStringList lines = shownLines();
    const int lineHeight = fontMetrics().height();
    const auto side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
    QRect place = contentsRect();
    place.setTop(place.top() + (place.height() - lineHeight * static_cast<int>(lines.size())) / 2);
    place.setHeight(lineHeight);
    for (const QString& line : lines) {
        painter.drawText(place, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine,
                         line);
        place.translate(0, lineHeight);
    }
}

}  // namespace valdorn
