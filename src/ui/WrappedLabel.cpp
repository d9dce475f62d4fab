#include "ui/WrappedLabel.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <cmath>

#include "ui/PlainText.h"
#include "ui/TextFlow.h"
#include "ui/ToolTips.h"

namespace valdorn {

namespace {

// A column narrower than that is no text any more.
constexpr int leastCharacters = 12;

// Wider than any text that is kept.
constexpr int onOneLine = 1'000'000;

}  // namespace

WrappedLabel::WrappedLabel(TextStyle style, int mostLines)
    : StyledLabel(style), mostLines_(mostLines) {
    setWordWrap(true);  // for its layout: the height depends on the width
}

void WrappedLabel::setText(const QString& text) {
    StyledLabel::setText(PlainText::shortened(text));
}

WrappedLabel::Lines WrappedLabel::laidOut(int width) const {
    const QString whole = PlainText::oneLine(text()).trimmed();
    QTextLayout layout(whole, font());
    QTextOption option(Qt::AlignLeading);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    Lines result;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        result.width = std::max(result.width, static_cast<int>(std::ceil(line.naturalTextWidth())));
        const int start = line.textStart();
        const int end = start + line.textLength();
        result.isCut = result.lines.size() + 1 == mostLines_ && end < whole.size();
        result.lines += result.isCut
                            ? fontMetrics().elidedText(whole.mid(start), Qt::ElideRight, width)
                            : whole.mid(start, end - start).trimmed();
        if (result.isCut)
            break;
    }
    layout.endLayout();
    return result;
}

QSize WrappedLabel::sizeHint() const {
    ensurePolished();
    return {laidOut(onOneLine).width, fontMetrics().height()};
}

QSize WrappedLabel::minimumSizeHint() const {
    ensurePolished();
    return {qMin(fontMetrics().averageCharWidth() * leastCharacters, sizeHint().width()),
            fontMetrics().height()};
}

int WrappedLabel::heightForWidth(int width) const {
    return static_cast<int>(qMax<qsizetype>(laidOut(width).lines.size(), 1)) *
           fontMetrics().height();
}

// The tooltip is made when it is asked for: only then is it known whether something is left out.
bool WrappedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return StyledLabel::event(event);
    ToolTips::answer(*static_cast<QHelpEvent*>(event), *this, text(),
                     laidOut(contentsRect().width()).isCut);
    return true;
}

void WrappedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QStringList lines = shownLines();
    const int lineHeight = fontMetrics().height();
    const int flags = TextFlow::flags(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter, text());
    QRect place = contentsRect();
    place.setTop(place.top() + (place.height() - lineHeight * static_cast<int>(lines.size())) / 2);
    place.setHeight(lineHeight);
    for (const QString& line : lines) {
        painter.drawText(place, flags | Qt::TextSingleLine, line);
        place.translate(0, lineHeight);
    }
}

}  // namespace valdorn
