#include "ui/SymbolButton.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>

#include "ui/NativeSymbols.h"
#include "ui/PlainText.h"
#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

constexpr double ringPoints = 2.0;
constexpr int hoverAlpha = 24;    // of 255: noticed, and the symbol keeps its contrast
constexpr int pressedAlpha = 56;  // plainly more than the pointer alone

}  // namespace

SymbolButton::SymbolButton(int symbolPoints, QWidget* parent)
    : QAbstractButton(parent), symbolPoints_(symbolPoints) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void SymbolButton::setSymbol(const QString& name, std::optional<SystemColor> color,
                             const QString& action) {
    symbol_ = name;
    color_ = color;
    setToolTip(PlainText::toolTip(action));
    setAccessibleName(action);
    update();
}

QSize SymbolButton::sizeHint() const {
    const int side = symbolPoints_ + 2 * margin;
    return {side, side};
}

void SymbolButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QAbstractButton::keyPressEvent(event);
        return;
    }
    // A key held down is one press, not many.
    if (!event->isAutoRepeat())
        click();
}

// A pointer needs no ring; the keyboard does, once it has been used to walk the window.
bool SymbolButton::showsFocus() const {
    QStyleOption option;
    option.initFrom(this);
    return hasFocus() && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

QColor SymbolButton::symbolColor() const {
    QPalette usual = palette();
    usual.setCurrentColorGroup(QPalette::Active);
    if (!isEnabled() && SystemPalette::isHighContrast(usual))
        return SystemPalette::disabledText(usual);
    if (!isEnabled() || !color_)
        return palette().color(QPalette::WindowText);
    return SystemPalette::dot(*color_, palette());
}

QColor SymbolButton::shade() const {
    QColor color = palette().color(QPalette::WindowText);
    color.setAlpha(isDown() ? pressedAlpha : isEnabled() && underMouse() ? hoverAlpha : 0);
    return color;
}

void SymbolButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade());
    painter.drawEllipse(rect());

    const double scale = painter.deviceTransform().m11();
    QRectF square(0, 0, symbolPoints_, symbolPoints_);
    square.moveCenter(QRectF(rect()).center());
    painter.drawImage(square,
                      NativeSymbols::image(symbol_, symbolColor(), qRound(symbolPoints_ * scale)));

    if (!showsFocus())
        return;
    const double inset = ringPoints / 2;
    painter.setPen(QPen(palette().color(QPalette::Highlight), ringPoints));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(rect()).adjusted(inset, inset, -inset, -inset));
}

}  // namespace valdorn
