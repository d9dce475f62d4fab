#include "ui/ElidedLabel.h"

#include <QFontMetrics>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <cmath>

#include "ui/PlainText.h"
#include "ui/TextFlow.h"
#include "ui/ToolTips.h"

namespace valdorn {

namespace {

// Enough to see that there is a text, and to point at it.
constexpr int usualLeastCharacters = 4;

}  // namespace

ElidedLabel::ElidedLabel(TextStyle style, std::optional<SystemColor> color, QFont::Weight weight)
    : StyledLabel(style, color, weight), leastCharacters_(usualLeastCharacters) {
    // Takes no more than its text, and less when there is less.
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void ElidedLabel::setLeastCharacters(int count) {
    leastCharacters_ = count;
    updateGeometry();
}

// Measuring takes time for each letter, and is done again with each layout and painting.
void ElidedLabel::setText(const QString& text) {
    StyledLabel::setText(PlainText::shortened(text));
}

QString ElidedLabel::shownText() const {
    const QString line = PlainText::oneLine(text());
    const int room = contentsRect().width();
    return widthOf(line) <= room ? line : fontMetrics().elidedText(line, Qt::ElideMiddle, room);
}

// Rounded up, or the last fraction of a point would cost letters.
int ElidedLabel::widthOf(const QString& line) const {
    return static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(line)));
}

QSize ElidedLabel::sizeHint() const {
    ensurePolished();
    return {widthOf(PlainText::oneLine(text())), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    const QSize wanted = sizeHint();
    return {qMin(wanted.width(), leastCharacters_ * fontMetrics().averageCharWidth()),
            wanted.height()};
}

// The tooltip is made when it is asked for: only then is it known what is left out.
bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return StyledLabel::event(event);
    const bool isCut = shownText() != PlainText::oneLine(text());
    ToolTips::answer(*static_cast<QHelpEvent*>(event), *this, text(), isCut);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QString shown = shownText();
    const int flags = TextFlow::flags(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter, shown);
    painter.drawText(contentsRect(), flags | Qt::TextSingleLine,
                     TextFlow::inPlace(layoutDirection(), shown));
}

}  // namespace valdorn
