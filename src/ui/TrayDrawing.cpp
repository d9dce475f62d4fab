#include "ui/TrayDrawing.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

#include "ui/NativeSymbols.h"
#include "ui/Spokes.h"
#include "ui/SystemPalette.h"

namespace valdorn::TrayDrawing {

namespace {

// Every size travels to the bar with each change: the usual ones, and the double of the smaller.
constexpr std::array sizes{16, 22, 24, 32, 48};

constexpr int spinnerPoints = 16;
constexpr int squareItemPoints = 24;  // the proportion when the item has no fixed width

const QColor spokeOutline(0, 0, 0, 150);

QImage transparent(int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QIcon inEverySize(const std::function<QImage(int pixels)>& draw) {
    QIcon icon;
    for (const int pixels : sizes)
        icon.addPixmap(QPixmap::fromImage(draw(pixels)));
    return icon;
}

// The shape in one colour, widened by `reach` pixels all around.
QImage widened(const QImage& shape, double reach, const QColor& color) {
    QImage wide = transparent(shape.width());
    QPainter painter(&wide);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    constexpr int directions = 24;
    for (int i = 0; i < directions; ++i) {
        const double angle = 2 * std::numbers::pi * i / directions;
        painter.drawImage(QPointF(reach * std::cos(angle), reach * std::sin(angle)), shape);
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(wide.rect(), color);
    return wide;
}

// Everything within a symbol's outline: the outlined form and the filled one, whose holes it closes.
QImage silhouette(QString symbol, int pixels) {
    const QString filled = QStringLiteral(".fill");
    if (symbol.endsWith(filled))
        symbol.chop(filled.size());
    QImage image = NativeSymbols::image(symbol, Qt::black, pixels);
    QPainter painter(&image);
    painter.drawImage(0, 0, NativeSymbols::image(symbol + filled, Qt::black, pixels));
    return image;
}

// The symbol with a dark rim of its own hue around it, and only there: on a light bar a rim along
// each stroke would turn the inside to mud.
QImage rimmed(const QString& symbol, const QColor& color, int pixels) {
    constexpr double reach = 0.75 / 24;  // of the width: wide enough at 16 pixels, in the margin
    constexpr int darkness = 230;        // percent; yellow then has 7:1 on white
    const QImage inside = silhouette(symbol, pixels);
    QImage result = widened(inside, reach * pixels, color.darker(darkness));
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawImage(0, 0, inside);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(0, 0, NativeSymbols::image(symbol, color, pixels));
    return result;
}

// The spokes' outline fades with them: on a light bar it is the outline that turns.
QImage spinnerShape(int frame, int pixels, double diameter) {
    QImage image = transparent(pixels);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(pixels / 2.0, pixels / 2.0);
    const double radius = diameter / 2;
    Spokes::draw(painter, frame, radius, Spokes::wide, spokeOutline);
    Spokes::draw(painter, frame, radius, Spokes::thin,
                 SystemPalette::darkVariant(SystemColor::secondary).lighter(138));
    return image;
}

}  // namespace

QIcon icon(const StatusIcon& icon) {
    return inEverySize([&icon](int pixels) {
        return rimmed(QString::fromStdString(icon.symbol), SystemPalette::darkVariant(icon.color),
                      pixels);
    });
}

QIcon spinner(int frame, int itemWidthPoints) {
    const int square = itemWidthPoints > 0 ? itemWidthPoints : squareItemPoints;
    const double share = std::min(1.0, static_cast<double>(spinnerPoints) / square);
    return inEverySize(
        [frame, share](int pixels) { return spinnerShape(frame, pixels, pixels * share); });
}

QIcon empty() {
    return inEverySize(transparent);
}

}  // namespace valdorn::TrayDrawing
