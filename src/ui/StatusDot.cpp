#include "ui/StatusDot.h"

#include <QPainter>

#include "ui/AccessibleRole.h"
#include "ui/SystemPalette.h"

namespace valdorn {

StatusDot::StatusDot() {
    setFixedSize(diameter, diameter);
    AccessibleRole::set(*this, QAccessible::Graphic);
}

void StatusDot::setStatus(SystemColor color, const QString& title) {
    color_ = color;
    setAccessibleName(title);
    update();
}

void StatusDot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(SystemPalette::dot(color_, palette()));
    painter.drawEllipse(rect());
}

}  // namespace valdorn
