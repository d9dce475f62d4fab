#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <set>

#include <gtest/gtest.h>

#include "ui/NativeSymbols.h"

namespace valdorn {
namespace {

constexpr const char* names[] = {"bird",  "bird.fill",        "plus",
                                 "minus", "play.circle.fill", "stop.circle.fill"};

// How much of the picture is covered, and whether in this one colour.
double coverage(const QImage& image, const QColor& color) {
    double covered = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            covered += static_cast<double>(pixel.alphaF());
            EXPECT_TRUE(pixel.alpha() < 255 || pixel.rgb() == color.rgb());
        }
    }
    return covered / (image.width() * image.height());
}

QImage drawn(const char* name, const QColor& color, int pixels) {
    return NativeSymbols::image(QLatin1String(name), color, pixels);
}

TEST(NativeSymbolsTest, EverySymbolIsDrawnInTheOneColour) {
    for (const char* const name : names) {
        const double share = coverage(drawn(name, Qt::red, 64), Qt::red);
        EXPECT_GT(share, 0.03) << name;
        EXPECT_LT(share, 0.9) << name;
    }
}

TEST(NativeSymbolsTest, SymbolsDiffer) {
    std::set<QByteArray> pictures;
    for (const char* const name : names) {
        const QImage image = drawn(name, Qt::black, 32);
        pictures.emplace(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes());
    }
    EXPECT_EQ(pictures.size(), std::size(names));
}

TEST(NativeSymbolsTest, FilledBirdCoversMoreThanTheOutlinedOne) {
    EXPECT_GT(coverage(drawn("bird.fill", Qt::black, 64), Qt::black),
              coverage(drawn("bird", Qt::black, 64), Qt::black) * 1.3);
}

TEST(NativeSymbolsTest, UnknownSymbolIsADisc) {
    const QImage disc = drawn("no such symbol", Qt::green, 30);
    EXPECT_EQ(disc.pixelColor(15, 15), QColor(Qt::green));
    EXPECT_EQ(disc.pixelColor(1, 1).alpha(), 0);
}

TEST(NativeSymbolsTest, IconIsDrawnForEachSizeAndScale) {
    const QIcon icon = NativeSymbols::icon(QStringLiteral("play.circle.fill"));
    for (const int side : {16, 20, 31, 64})
        EXPECT_EQ(icon.pixmap(QSize(side, side)).size(), QSize(side, side));
    EXPECT_EQ(icon.pixmap(QSize(16, 16), 2.0).size(), QSize(32, 32));
}

TEST(NativeSymbolsTest, IconFollowsTheTextColourOfTheMoment) {
    const QIcon icon = NativeSymbols::icon(QStringLiteral("stop.circle.fill"));
    const QPalette before = QApplication::palette();
    for (const QColor color : {QColor(10, 20, 30), QColor(240, 230, 220)}) {
        QPalette palette = before;
        palette.setColor(QPalette::ButtonText, color);
        QApplication::setPalette(palette);
        const QImage image = icon.pixmap(QSize(64, 64)).toImage();
        EXPECT_EQ(image.pixelColor(8, 32).rgb(), color.rgb());
    }
    QApplication::setPalette(before);
}

TEST(NativeSymbolsTest, IconOnAHighlightHasTheColourOfHighlightedText) {
    const QPalette before = QApplication::palette();
    QPalette palette = before;
    palette.setColor(QPalette::ButtonText, QColor(10, 20, 30));
    palette.setColor(QPalette::HighlightedText, QColor(240, 230, 220));
    QApplication::setPalette(palette);
    const QIcon icon = NativeSymbols::icon(QStringLiteral("stop.circle.fill"));
    const QImage image = icon.pixmap(QSize(64, 64), QIcon::Selected).toImage();
    EXPECT_EQ(image.pixelColor(8, 32).rgb(), QColor(240, 230, 220).rgb());
    QApplication::setPalette(before);
}

TEST(NativeSymbolsTest, IconIsSharpWhateverScalesThePainter) {
    QImage twice(64, 64, QImage::Format_ARGB32_Premultiplied);
    twice.fill(Qt::transparent);
    QPainter painter(&twice);
    painter.scale(2, 2);
    NativeSymbols::icon(QStringLiteral("plus")).paint(&painter, QRect(0, 0, 32, 32));
    painter.end();
    const QColor text = QApplication::palette().color(QPalette::ButtonText);
    EXPECT_EQ(twice, NativeSymbols::image(QStringLiteral("plus"), text, 64));
}

}  // namespace
}  // namespace valdorn
