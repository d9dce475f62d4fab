#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QWidget>

#include <gtest/gtest.h>

#include "ui/Pictures.h"

namespace valdorn {
namespace {

// What a drawn window may differ in.
struct Sketch {
    double textShift = 0;
    bool hasDot = true;
    bool hasLine = true;
    QColor background{0xEF, 0xEF, 0xEF};
    QFont::HintingPreference hinting = QFont::PreferDefaultHinting;
};

QImage drawn(const Sketch& sketch) {
    QImage image(300, 120, QImage::Format_RGB32);
    image.fill(sketch.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font(QStringLiteral("DejaVu Sans"), 10);
    font.setHintingPreference(sketch.hinting);
    painter.setFont(font);
    painter.setPen(QColor(0x66, 0x66, 0x66));
    painter.drawText(QPointF(30 + sketch.textShift, 40), QStringLiteral("Connected, up 1:23"));
    if (sketch.hasLine)
        painter.drawLine(QPointF(30, 80.5), QPointF(270, 80.5));
    if (sketch.hasDot) {
        painter.setBrush(Qt::red);
        painter.drawEllipse(10, 30, 10, 10);
    }
    return image;
}

testing::AssertionResult alike(const Sketch& one, const Sketch& other) {
    return Pictures::areAlike(drawn(one), drawn(other));
}

TEST(PicturesTest, PictureIsLikeItself) {
    EXPECT_TRUE(alike({}, {}));
}

TEST(PicturesTest, OtherEdgesOfTheSameTextPass) {
    Sketch unhinted;
    unhinted.hinting = QFont::PreferNoHinting;
    ASSERT_NE(drawn(unhinted), drawn({}));
    EXPECT_TRUE(alike(unhinted, {}));
    Sketch halfAPixelOn;
    halfAPixelOn.textShift = 0.5;
    EXPECT_TRUE(alike(halfAPixelOn, {}));
}

TEST(PicturesTest, LayoutShiftedByThreePixelsFails) {
    for (const double shift : {-3.0, 3.0}) {
        Sketch shifted;
        shifted.textShift = shift;
        EXPECT_FALSE(alike(shifted, {}));
    }
}

TEST(PicturesTest, MissingOrAdditionalControlFails) {
    Sketch dotless;
    dotless.hasDot = false;
    EXPECT_FALSE(alike(dotless, {}));
    EXPECT_FALSE(alike({}, dotless));
    Sketch lineless;
    lineless.hasLine = false;
    EXPECT_FALSE(alike(lineless, {}));
    EXPECT_FALSE(alike({}, lineless));
}

TEST(PicturesTest, OtherColourFails) {
    Sketch tinted;
    tinted.background = QColor(0xEF, 0xEF, 0xE8);
    EXPECT_FALSE(alike(tinted, {}));
}

TEST(PicturesTest, OtherSizeFails) {
    EXPECT_FALSE(Pictures::areAlike(QImage(10, 10, QImage::Format_RGB32),
                                    QImage(10, 11, QImage::Format_RGB32)));
}

TEST(PicturesTest, RenderingIsAsSharpAsTheScreen) {
    const Looks looks(Scheme::light);
    QWidget widget;
    widget.resize(30, 20);
    EXPECT_EQ(Pictures::render(widget).size(), QSize(30, 20));
    const QImage twice = Pictures::render(widget, 2);
    EXPECT_EQ(twice.size(), QSize(60, 40));
    EXPECT_EQ(twice.deviceIndependentSize(), QSizeF(30, 20));
    EXPECT_EQ(twice.pixelColor(59, 39), QColor(0xEF, 0xEF, 0xEF));
}

TEST(PicturesTest, LooksGoAsTheyCame) {
    const QString style = QApplication::style()->objectName();
    const QFont font = QApplication::font();
    const QPalette palette = QApplication::palette();
    QLabel label;
    label.ensurePolished();
    {
        Looks looks(Scheme::dark, 14);
        EXPECT_EQ(QApplication::font().family(), QStringLiteral("DejaVu Sans"));
        EXPECT_LT(label.palette().color(QPalette::Window).lightness(), 80);
        looks.change(Scheme::light, 9);
        EXPECT_GT(label.palette().color(QPalette::Window).lightness(), 200);
        EXPECT_NEAR(label.font().pointSizeF(), 9, 0.01);
    }
    EXPECT_EQ(QApplication::style()->objectName(), style);
    EXPECT_EQ(QApplication::font(), font);
    EXPECT_EQ(QApplication::palette(), palette);
}

}  // namespace
}  // namespace valdorn
