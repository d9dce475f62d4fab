#include "ui/Pictures.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>
#include <QWidget>
#include <algorithm>
#include <cstdlib>

namespace valdorn {

namespace {

constexpr double bearableMean = 1.0;       // levels of 255, over the whole picture
constexpr int bearableStep = 40;           // levels by which one pixel may stray
constexpr double bearableStrays = 0.0006;  // of all pixels ...
constexpr double mostStrays = 40;          // ... and fewer than a status dot has

struct Shades {
    QColor window;
    QColor base;
    QColor button;
    QColor text;
    QColor disabled;
    QColor highlight;
};

Shades shadesOf(Scheme scheme) {
    switch (scheme) {
        case Scheme::dark:
            return {QColor(0x2A, 0x2A, 0x2E), QColor(0x1E, 0x1E, 0x20), QColor(0x3A, 0x3A, 0x3E),
                    QColor(0xF2, 0xF2, 0xF2), QColor(0x88, 0x88, 0x8C), QColor(0x30, 0x8C, 0xC6)};
        case Scheme::blackOnWhite:
            return {Qt::white, Qt::white, Qt::white, Qt::black, QColor(0x6A, 0x6A, 0x6A),
                    Qt::black};
        case Scheme::whiteOnBlack:
            return {Qt::black,
                    Qt::black,
                    Qt::black,
                    Qt::white,
                    QColor(0xA0, 0xA0, 0xA0),
                    QColor(0x1A, 0xEB, 0xFF)};
        case Scheme::light:
            break;
    }
    return {QColor(0xEF, 0xEF, 0xEF), Qt::white,
            QColor(0xEF, 0xEF, 0xEF), Qt::black,
            QColor(0x88, 0x88, 0x8C), QColor(0x30, 0x8C, 0xC6)};
}

QPalette paletteOf(Scheme scheme) {
    const Shades shades = shadesOf(scheme);
    QPalette palette(shades.button, shades.window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, shades.text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, shades.disabled);
    palette.setColor(QPalette::Base, shades.base);
    palette.setColor(QPalette::AlternateBase, shades.window);
    palette.setColor(QPalette::ToolTipBase, shades.base);
    palette.setColor(QPalette::PlaceholderText, QColor(0x80, 0x80, 0x84));
    palette.setColor(QPalette::Highlight, shades.highlight);
    palette.setColor(QPalette::HighlightedText,
                     scheme == Scheme::whiteOnBlack ? Qt::black : Qt::white);
    return palette;
}

struct Range {
    int low = 255;
    int high = 0;

    void include(int value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    int distanceTo(int value) const { return std::max({low - value, value - high, 0}); }
};

int channel(QRgb pixel, int index) {
    return static_cast<int>(pixel >> (8 * index)) & 0xFF;
}

// How far the pixel of `one` is from all that the other picture has within a pixel's reach.
int strayed(const QImage& one, const QImage& other, int x, int y) {
    int result = 0;
    for (int index = 0; index < 3; ++index) {
        Range near;
        for (int row = std::max(y - 1, 0); row <= std::min(y + 1, other.height() - 1); ++row) {
            for (int col = std::max(x - 1, 0); col <= std::min(x + 1, other.width() - 1); ++col)
                near.include(channel(other.pixel(col, row), index));
        }
        result = std::max(result, near.distanceTo(channel(one.pixel(x, y), index)));
    }
    return result;
}

struct Difference {
    double mean = 0;
    int strays = 0;
};

Difference differenceOf(const QImage& one, const QImage& other) {
    Difference result;
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            for (int index = 0; index < 3; ++index)
                sum +=
                    std::abs(channel(one.pixel(x, y), index) - channel(other.pixel(x, y), index));
            const int away = std::max(strayed(one, other, x, y), strayed(other, one, x, y));
            result.strays += away > bearableStep ? 1 : 0;
        }
    }
    result.mean = sum / (3.0 * one.width() * one.height());
    return result;
}

QString pathIn(const char* folder, const std::string& name) {
    QDir().mkpath(QString::fromLatin1(folder));
    return QStringLiteral("%1/%2.png").arg(QLatin1String(folder), QString::fromStdString(name));
}

}  // namespace

Looks::Looks(Scheme scheme, double bodyPoints)
    : styleBefore_(QApplication::style()->objectName()), fontBefore_(QApplication::font()) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    change(scheme, bodyPoints);
}

Looks::~Looks() {
    QApplication::setPalette(QPalette());
    QApplication::setFont(fontBefore_);
    QApplication::setStyle(QStyleFactory::create(styleBefore_));
}

void Looks::change(Scheme scheme, double bodyPoints) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(bodyPoints);
    QApplication::setFont(font);
    QApplication::setPalette(paletteOf(scheme));
    QCoreApplication::sendPostedEvents();
}

std::string suffixOf(Scheme scheme) {
    switch (scheme) {
        case Scheme::dark:
            return "_dark";
        case Scheme::blackOnWhite:
            return "_black_on_white";
        case Scheme::whiteOnBlack:
            return "_white_on_black";
        case Scheme::light:
            break;
    }
    return "_light";
}

RightToLeft::RightToLeft() {
    QApplication::setLayoutDirection(Qt::RightToLeft);
}

RightToLeft::~RightToLeft() {
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

namespace Pictures {

QImage render(QWidget& widget, double scale) {
    QCoreApplication::sendPostedEvents();
    QImage image((QSizeF(widget.size()) * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(widget.palette().color(QPalette::Window));
    widget.render(&image);
    return image;
}

testing::AssertionResult areAlike(const QImage& seen, const QImage& reference) {
    const QImage one = seen.convertToFormat(QImage::Format_RGB32);
    const QImage other = reference.convertToFormat(QImage::Format_RGB32);
    if (one.size() != other.size())
        return testing::AssertionFailure()
               << one.width() << " x " << one.height() << " pixels instead of " << other.width()
               << " x " << other.height();
    const Difference found = differenceOf(one, other);
    const double bearable = std::min(bearableStrays * one.width() * one.height(), mostStrays);
    const bool alike = found.mean <= bearableMean && found.strays <= bearable;
    return (alike ? testing::AssertionSuccess() : testing::AssertionFailure())
           << "mean difference " << found.mean << " (at most " << bearableMean << "), "
           << found.strays << " pixels elsewhere (at most " << bearable << ")";
}

void expectLikeReference(const QImage& seen, const std::string& name) {
    const QString seenPath = pathIn(VALDORN_SEEN_PICTURES, name);
    EXPECT_TRUE(seen.save(seenPath));
    const QString referencePath = pathIn(VALDORN_REFERENCE_PICTURES, name);
    if (qEnvironmentVariableIsSet("VALDORN_UPDATE_PICTURES")) {
        EXPECT_TRUE(seen.save(referencePath));
        return;
    }
    const QImage reference(referencePath);
    ASSERT_FALSE(reference.isNull()) << "There is no picture " << referencePath.toStdString();
    EXPECT_TRUE(areAlike(seen, reference))
        << "Seen: " << seenPath.toStdString() << "\nReference: " << referencePath.toStdString();
}

}  // namespace Pictures

}  // namespace valdorn
