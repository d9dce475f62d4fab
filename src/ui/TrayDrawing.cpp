#include "ui/TrayDrawing.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <span>
#include <vector>

#include "ui/NativeSymbols.h"
#include "ui/Spokes.h"
#include "ui/StatusMark.h"
#include "ui/SystemPalette.h"

namespace valdorn::TrayDrawing {

namespace {

// Every size travels to the bar with each change: the usual ones, and the double of the smaller. Of
// the spinner, which changes all the time, only those that most bars ask for.
constexpr std::array iconSizes{16, 22, 24, 32, 48};
constexpr std::array spinnerSizes{16, 22, 24, 48};

constexpr int spinnerPoints = 16;
constexpr int squareItemPoints = 24;  // the proportion when the item has no fixed width

const QColor spokeOutline(0, 0, 0, 215);

QImage transparent(int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QIcon inEverySize(std::span<const int> sizes, const std::function<QImage(int pixels)>& draw) {
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

// The shape in one colour, with a dark rim of its own hue around what is inside of it, and only
// there: on a light bar a rim along each stroke would turn the inside to mud.
QImage rimmed(const QImage& shape, const QImage& inside, const QColor& color, double reach) {
    constexpr int darkness = 230;  // percent; yellow then has 7:1 on white
    QImage result = widened(inside, reach, color.darker(darkness));
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawImage(0, 0, inside);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(0, 0, shape);
    return result;
}

QImage shapeOf(const StatusMark& mark, const QColor& color, int pixels) {
    constexpr int roundFrom = 4;  // pixels; what is smaller would only turn pale
    QImage image = transparent(pixels);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    for (const QRect& part : mark.parts) {
        const double radius = part.width() < roundFrom ? 0 : part.width() / 2.0;
        painter.drawRoundedRect(part, radius, radius);
    }
    return image;
}

// The mark stands on the bar itself, and its rim leaves something of the gaps in it.
void drawMark(QImage& symbol, const StatusMark& mark, const QColor& color) {
    constexpr double reach = 0.5;  // pixels
    const QImage shape = shapeOf(mark, color, symbol.width());
    QPainter painter(&symbol);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillRect(mark.ground, Qt::black);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(0, 0, rimmed(shape, shape, color, reach));
}

QImage iconImage(const StatusIcon& icon, int pixels) {
    const double reach = 0.75 / 24 * pixels;  // wide enough at 16 pixels, and in the margin
    const QString symbol = QString::fromStdString(icon.symbol);
    const QColor color = SystemPalette::darkVariant(icon.color);
    QImage image = rimmed(NativeSymbols::image(symbol, color, pixels), silhouette(symbol, pixels),
                          color, reach);
    if (const StatusMark mark = StatusMark::of(icon.color, pixels); !mark.parts.empty())
        drawMark(image, mark, color);
    return image;
}

// The spokes' outline fades with them: on a light bar it is the outline that turns. On the smallest
// pictures both are wider than their share, or there would be nothing but half tones.
QImage spinnerShape(int frame, int pixels, double diameter) {
    constexpr double leastSpoke = 1.8;    // pixels
    constexpr double leastOutline = 1.2;  // pixels, both sides of the spoke
    QImage image = transparent(pixels);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(pixels / 2.0, pixels / 2.0);
    const double radius = diameter / 2;
    const double thin = std::max(Spokes::thin, leastSpoke / radius);
    const double wide = std::max(Spokes::wide, thin + leastOutline / radius);
    Spokes::draw(painter, frame, radius, wide, spokeOutline);
    Spokes::draw(painter, frame, radius, thin,
                 SystemPalette::darkVariant(SystemColor::secondary).lighter(118));
    return image;
}

}  // namespace

QIcon icon(const StatusIcon& icon) {
    return inEverySize(iconSizes, [&icon](int pixels) { return iconImage(icon, pixels); });
}

QIcon spinner(int frame, int itemWidthPoints) {
    const int square = itemWidthPoints > 0 ? itemWidthPoints : squareItemPoints;
    const double share = std::min(1.0, static_cast<double>(spinnerPoints) / square);
    return inEverySize(spinnerSizes, [frame, share](int pixels) {
        return spinnerShape(frame, pixels, pixels * share);
    });
}

QIcon empty() {
    return inEverySize(iconSizes, transparent);
}

}  // namespace valdorn::TrayDrawing
