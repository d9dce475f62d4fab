#include "ui/SystemPalette.h"

#include <QApplication>
#include <QPalette>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace valdorn::SystemPalette {

namespace {

const QColor middleGray(0x9A, 0x9A, 0xA0);  // as far from black as from white

constexpr double dotContrast = 3.0;       // graphical objects, WCAG 2.1 criterion 1.4.11
constexpr double textContrast = 4.5;      // text, WCAG 2.1 criterion 1.4.3
constexpr double enhancedContrast = 7.0;  // text, criterion 1.4.6

// Black on white has 21. The usual light and dark palettes stay below 19.
constexpr double highContrast = 20.0;

// Text at 55 %: quieter than text, and still readable on the usual palettes.
QColor secondary(const QPalette& palette) {
    return mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.55);
}

QColor lightVariant(SystemColor color) {
    switch (color) {
        case SystemColor::green:
            return {0x34, 0xC7, 0x59};
        case SystemColor::yellow:
            return {0xFF, 0xCC, 0x00};
        case SystemColor::orange:
            return {0xFF, 0x95, 0x00};
        case SystemColor::red:
            return {0xFF, 0x3B, 0x30};
        case SystemColor::blue:
            return {0x00, 0x7A, 0xFF};
        case SystemColor::secondary:
            break;
    }
    return middleGray;
}

QColor named(SystemColor color, const QPalette& palette) {
    if (color == SystemColor::secondary)
        return secondary(palette);
    return isDark(palette) ? darkVariant(color) : lightVariant(color);
}

QColor standingOut(SystemColor color, const QPalette& palette, double wanted) {
    const QColor window = palette.color(QPalette::Window);
    const QColor extreme = isDark(palette) ? QColor(Qt::white) : QColor(Qt::black);
    const QColor start = named(color, palette);
    QColor result = start;
    for (int percent = 2; contrast(result, window) < wanted && percent <= 100; percent += 2)
        result = mixed(start, extreme, percent / 100.0);
    return result;
}

// Fields are black on white on most desktops: it is the window that tells.
double contrastOfText(const QPalette& palette) {
    return isHighContrast(palette) ? enhancedContrast : textContrast;
}

double luminance(const QColor& color) {
    const auto linear = [](float channel) {
        const double value = static_cast<double>(channel);
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

}  // namespace

QPalette around(const QWidget& widget) {
    const QWidget* const parent = widget.parentWidget();
    return parent ? parent->palette() : QApplication::palette();
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto channel = [share](int a, int b) {
        return static_cast<int>(std::lround(a + (b - a) * share));
    };
    return {channel(from.red(), to.red()), channel(from.green(), to.green()),
            channel(from.blue(), to.blue())};
}

bool isDark(const QPalette& palette) {
    return luminance(palette.color(QPalette::WindowText)) >
           luminance(palette.color(QPalette::Window));
}

QColor darkVariant(SystemColor color) {
    switch (color) {
        case SystemColor::green:
            return {0x30, 0xD1, 0x58};
        case SystemColor::yellow:
            return {0xFF, 0xD6, 0x0A};
        case SystemColor::orange:
            return {0xFF, 0x9F, 0x0A};
        case SystemColor::red:
            return {0xFF, 0x45, 0x3A};
        case SystemColor::blue:
            return {0x0A, 0x84, 0xFF};
        case SystemColor::secondary:
            break;
    }
    return middleGray;
}

bool isHighContrast(const QPalette& palette) {
    return contrast(palette.color(QPalette::Window), palette.color(QPalette::WindowText)) >=
           highContrast;
}

QColor dot(SystemColor color, const QPalette& palette) {
    return standingOut(color, palette, isHighContrast(palette) ? textContrast : dotContrast);
}

QColor text(SystemColor color, const QPalette& palette) {
    return standingOut(color, palette, contrastOfText(palette));
}

QColor textOnBase(SystemColor color, const QPalette& palette) {
    QPalette ground = palette;
    ground.setColor(QPalette::Window, palette.color(QPalette::Base));
    ground.setColor(QPalette::WindowText, palette.color(QPalette::Text));
    return standingOut(color, ground, contrastOfText(palette));
}

QColor disabledText(const QPalette& palette) {
    return standingOut(SystemColor::secondary, palette, textContrast);
}

QColor line(const QPalette& palette, double share) {
    const QColor full = palette.color(QPalette::WindowText);
    return isHighContrast(palette) ? full : mixed(palette.color(QPalette::Window), full, share);
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace valdorn::SystemPalette
