#include "ui/GroupPanel.h"

#include <QEvent>
#include <QPainter>

#include "ui/AccessibleRole.h"
#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

constexpr double cornerRadius = 6.0;
constexpr int insetPoints = 4;  // between the panel's edge and what the group lays out

// Panels are lighter than their window, as if a little nearer; on dark windows, where white is
// far away, by less. Without a window's colour to lighten the edge alone tells.
constexpr double lightShare = 0.55;
constexpr double darkShare = 0.055;
constexpr double edgeShare = 0.10;

QColor panelColor(const QPalette& around) {
    if (SystemPalette::isHighContrast(around))
        return around.color(QPalette::Window);  // its edge is all it needs
    const double share = SystemPalette::isDark(around) ? darkShare : lightShare;
    return SystemPalette::mixed(around.color(QPalette::Window), Qt::white, share);
}

}  // namespace

GroupPanel::GroupPanel(QWidget* parent) : QWidget(parent) {
    setContentsMargins(insetPoints, insetPoints, insetPoints, insetPoints);
    AccessibleRole::set(*this, QAccessible::Grouping);
    reshade();
}

void GroupPanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
        reshade();
}

void GroupPanel::reshade() {
    const QPalette around = SystemPalette::around(*this);
    QPalette own;  // only what is set here counts, the rest stays inherited
    own.setColor(QPalette::Window, panelColor(around));
    // Setting a palette announces its change, which leads back here.
    if (palette().color(QPalette::Window) != own.color(QPalette::Window))
        setPalette(own);
}

void GroupPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(SystemPalette::line(palette(), edgeShare));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius,
                            cornerRadius);
}

}  // namespace valdorn
