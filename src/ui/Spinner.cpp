#include "ui/Spinner.h"

#include <QPainter>
#include <chrono>

#include "ui/AccessibleRole.h"
#include "ui/Spokes.h"
#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

constexpr std::chrono::milliseconds turn{1000};

}  // namespace

Spinner::Spinner(MainQueue& queue) : queue_(queue) {
    setFixedSize(diameter, diameter);
    AccessibleRole::set(*this, QAccessible::Animation);
}

void Spinner::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    tick_ = queue_.every(turn / Spokes::count, [this] { advance(); });
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
    Spokes::draw(painter, position_, diameter / 2.0, Spokes::thin,
                 SystemPalette::text(SystemColor::secondary, palette()));
}

}  // namespace valdorn
