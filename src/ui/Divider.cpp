#include "ui/Divider.h"

#include <QPainter>

#include "ui/AccessibleRole.h"
#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

// Seen when looked for: what it divides is plain without it.
constexpr double lineShare = 0.18;

}  // namespace

Divider::Divider(Qt::Orientation orientation) {
    if (orientation == Qt::Horizontal)
        setFixedHeight(thickness);
    else
        setFixedWidth(thickness);
    AccessibleRole::set(*this, QAccessible::Separator);
}

void Divider::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), SystemPalette::line(palette(), lineShare));
}

}  // namespace valdorn
