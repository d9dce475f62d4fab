#include "ui/NativeSymbols.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

#include "ui/SystemPalette.h"

// The drawings live in a static library, whose resources nobody loads on their own. The macro
// wants to stand outside any namespace.
static void loadDrawings() {
    Q_INIT_RESOURCE(valdorn);
}

namespace valdorn {

namespace {

// Draws the shape; only its coverage counts, the colour comes later.
void drawShape(QPainter& painter, const QString& name, const QRectF& square) {
    const QString path = QStringLiteral(":/icons/%1.svg").arg(name);
    if (QFile::exists(path)) {
        QSvgRenderer(path).render(&painter, square);
        return;
    }
    painter.setBrush(Qt::black);
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(square.center(), square.width() / 3, square.height() / 3);
}

class SymbolIconEngine : public QIconEngine {
public:
    SymbolIconEngine(QString name, std::optional<SystemColor> color)
        : name_(std::move(name)), color_(color) {}

    QIconEngine* clone() const override { return new SymbolIconEngine(name_, color_); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal scale = painter->deviceTransform().m11();
        const int side = qMin(rect.width(), rect.height());
        const QImage drawn = NativeSymbols::image(name_, colorFor(mode), qRound(side * scale));
        QRectF square(0, 0, side, side);
        square.moveCenter(QRectF(rect).center());
        painter->drawImage(square, drawn);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

private:
    QColor colorFor(QIcon::Mode mode) const {
        const QPalette palette = QGuiApplication::palette();
        if (mode == QIcon::Disabled)
            return palette.color(QPalette::Disabled, QPalette::ButtonText);
        if (mode == QIcon::Selected && !color_)
            return palette.color(QPalette::HighlightedText);
        return color_ ? SystemPalette::dot(*color_, palette)
                      : palette.color(QPalette::Active, QPalette::ButtonText);
    }

    const QString name_;
    const std::optional<SystemColor> color_;
};

}  // namespace

namespace NativeSymbols {

QImage image(const QString& name, const QColor& color, int pixels) {
    loadDrawings();
    QImage drawn(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShape(painter, name, drawn.rect());
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(drawn.rect(), color);
    return drawn;
}

QIcon icon(const QString& name, std::optional<SystemColor> color) {
    return QIcon(new SymbolIconEngine(name, color));
}

}  // namespace NativeSymbols

}  // namespace valdorn
