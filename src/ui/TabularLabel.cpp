#include "ui/TabularLabel.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "ui/AccessibleRole.h"
#include "ui/StyledFont.h"
#include "ui/SystemPalette.h"
#include "ui/TextFlow.h"

namespace valdorn {

namespace {

double digitWidth(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(digit)));
    return widest;
}

double cellWidth(const QFontMetricsF& metrics, QChar character) {
    return character.isDigit() ? digitWidth(metrics) : metrics.horizontalAdvance(character);
}

double textWidth(const QFontMetricsF& metrics, const QString& text) {
    double sum = 0;
    for (const QChar character : text)
        sum += cellWidth(metrics, character);
    return sum;
}

}  // namespace

TabularLabel::TabularLabel(TextStyle style, SystemColor color) : color_(color) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    new StyledFont(*this, style);
    AccessibleRole::set(*this, QAccessible::StaticText);
}

void TabularLabel::setText(const QString& text) {
    const QSize before = sizeHint();
    text_ = text;
    setAccessibleName(text);
    if (sizeHint() != before)
        updateGeometry();
    update();
}

QSize TabularLabel::sizeHint() const {
    const QFontMetricsF metrics(font());
    return {static_cast<int>(std::ceil(textWidth(metrics, text_))), fontMetrics().height()};
}

void TabularLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(SystemPalette::text(color_, palette()));
    const QFontMetricsF metrics(font());
    double left = 0;
    const QString shown = TextFlow::inPlace(layoutDirection(), text_);
    for (const QChar character : shown) {
        const double cell = cellWidth(metrics, character);
        painter.drawText(QRectF(left, 0, cell, height()), Qt::AlignCenter, QString(character));
        left += cell;
    }
}

}  // namespace valdorn
