#include "ui/Spokes.h"

#include <QPainter>
#include <QPen>

namespace valdorn::Spokes {

namespace {

constexpr float fading = 0.11F;   // from one spoke to the next
constexpr double innerEnd = 0.5;  // both of the radius; round caps reach beyond
constexpr double outerEnd = 0.86;

}  // namespace

void draw(QPainter& painter, int position, double radius, double width, const QColor& color) {
    painter.save();
    for (int spoke = 0; spoke < count; ++spoke) {
        const int age = (position - spoke + count) % count;
        QColor faded = color;
        faded.setAlphaF(color.alphaF() * (1.0F - fading * static_cast<float>(age)));
        painter.setPen(QPen(faded, radius * width, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * innerEnd), QPointF(0, -radius * outerEnd));
        painter.rotate(360.0 / count);
    }
    painter.restore();
}

}  // namespace valdorn::Spokes
