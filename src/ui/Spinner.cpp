#include "ui/Spinner.h"

#include <QPainter>
#include <chrono>

#include "ui/AccessibleRole.h"
#include "ui/Spokes.h"
#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

// As often as the one in the status bar: a turn a second.
constexpr std::chrono::milliseconds period{125};

}  // namespace

Spinner::Spinner(MainQueue& queue) : queue_(queue) {
    setFixedSize(points, points);
    AccessibleRole::set(*this, QAccessible::Animation);
}

void Spinner::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    tick_ = queue_.every(period, [this] { advance(); });
}

void Spinner::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    tick_.cancel();
}

void Spinner::advance() {
    position_ = (position_ + 1) % Spokes::count;
    update();
}

void Spinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = points / 2.0;
    Spokes::draw(painter, position_, radius, radius * 0.2,
                 SystemPalette::text(SystemColor::secondary, palette()));
}

}  // namespace valdorn
