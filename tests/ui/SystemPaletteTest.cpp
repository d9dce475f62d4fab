#include <QPalette>

#include <gtest/gtest.h>

#include "ui/SystemPalette.h"

namespace valdorn {
namespace {

constexpr SystemColor colors[] = {SystemColor::secondary, SystemColor::green, SystemColor::yellow,
                                  SystemColor::orange,    SystemColor::red,   SystemColor::blue};

QPalette paletteOf(const QColor& window, const QColor& text) {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    return palette;
}

const QPalette light = paletteOf(QColor(0xEF, 0xEF, 0xEF), Qt::black);
const QPalette dark = paletteOf(QColor(0x20, 0x20, 0x24), Qt::white);
const QPalette blackOnWhite = paletteOf(Qt::white, Qt::black);
const QPalette whiteOnBlack = paletteOf(Qt::black, Qt::white);

TEST(SystemPaletteTest, ContrastRunsFromOneToTwentyOne) {
    EXPECT_NEAR(SystemPalette::contrast(Qt::white, Qt::black), 21, 0.01);
    EXPECT_NEAR(SystemPalette::contrast(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(SystemPalette::contrast(Qt::red, Qt::red), 1, 0.01);
    EXPECT_NEAR(SystemPalette::contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(SystemPaletteTest, DarkIsWhereTextIsLighterThanItsWindow) {
    EXPECT_FALSE(SystemPalette::isDark(light));
    EXPECT_TRUE(SystemPalette::isDark(dark));
}

TEST(SystemPaletteTest, EveryColourStandsOut) {
    for (const QPalette& palette : {light, dark, paletteOf(Qt::white, QColor(0x33, 0x33, 0x33)),
                                    paletteOf(QColor(0x60, 0x60, 0x60), Qt::white)}) {
        const QColor window = palette.color(QPalette::Window);
        for (const SystemColor color : colors) {
            EXPECT_GE(SystemPalette::contrast(SystemPalette::dot(color, palette), window), 3.0);
            EXPECT_GE(SystemPalette::contrast(SystemPalette::text(color, palette), window), 4.5);
        }
    }
}

// A text at 55 % has a contrast of three only on the gray.
TEST(SystemPaletteTest, DisabledTextCanBeReadAsAText) {
    for (const QPalette& palette :
         {blackOnWhite, whiteOnBlack, paletteOf(QColor(0x60, 0x60, 0x60), Qt::white)}) {
        const QColor window = palette.color(QPalette::Window);
        EXPECT_GE(SystemPalette::contrast(SystemPalette::disabledText(palette), window), 4.5);
    }
}

TEST(SystemPaletteTest, HighContrastIsBlackAndWhite) {
    EXPECT_TRUE(SystemPalette::isHighContrast(blackOnWhite));
    EXPECT_TRUE(SystemPalette::isHighContrast(whiteOnBlack));
    EXPECT_TRUE(SystemPalette::isHighContrast(paletteOf(QColor(0xFD, 0xFD, 0xFC), Qt::black)));
    for (const QPalette& usual : {light, dark, paletteOf(QColor(0xF6, 0xF5, 0xF4), Qt::black),
                                  paletteOf(QColor(0x12, 0x12, 0x12), Qt::white)})
        EXPECT_FALSE(SystemPalette::isHighContrast(usual));
}

TEST(SystemPaletteTest, NothingIsQuietWhereContrastIsHigh) {
    for (const QPalette& palette : {blackOnWhite, whiteOnBlack}) {
        const QColor window = palette.color(QPalette::Window);
        for (const SystemColor color : colors) {
            EXPECT_GE(SystemPalette::contrast(SystemPalette::dot(color, palette), window), 4.5);
            EXPECT_GE(SystemPalette::contrast(SystemPalette::text(color, palette), window), 7.0);
        }
        EXPECT_EQ(SystemPalette::line(palette, 0.1), palette.color(QPalette::WindowText));
    }
    EXPECT_EQ(SystemPalette::line(light, 0.5), QColor(0x78, 0x78, 0x78));
}

TEST(SystemPaletteTest, WhiteFieldsAloneAreNoHighContrast) {
    QPalette usual = light;
    usual.setColor(QPalette::Base, Qt::white);
    usual.setColor(QPalette::Text, Qt::black);
    QPalette strong = blackOnWhite;
    strong.setColor(QPalette::Base, Qt::white);
    strong.setColor(QPalette::Text, Qt::black);
    const auto contrastIn = [](const QPalette& palette) {
        return SystemPalette::contrast(SystemPalette::textOnBase(SystemColor::orange, palette),
                                       Qt::white);
    };
    EXPECT_GE(contrastIn(usual), 4.5);
    EXPECT_LT(contrastIn(usual), 6.0);
    EXPECT_GE(contrastIn(strong), 7.0);
}

TEST(SystemPaletteTest, ColourThatStandsOutIsTakenAsItIs) {
    EXPECT_EQ(SystemPalette::dot(SystemColor::green, dark), QColor(0x30, 0xD1, 0x58));
    EXPECT_EQ(SystemPalette::dot(SystemColor::yellow, dark), QColor(0xFF, 0xD6, 0x0A));
    EXPECT_EQ(SystemPalette::dot(SystemColor::orange, dark), QColor(0xFF, 0x9F, 0x0A));
    EXPECT_EQ(SystemPalette::dot(SystemColor::red, dark), QColor(0xFF, 0x45, 0x3A));
    EXPECT_EQ(SystemPalette::dot(SystemColor::blue, dark), QColor(0x0A, 0x84, 0xFF));
    EXPECT_EQ(SystemPalette::dot(SystemColor::red, light), QColor(0xFF, 0x3B, 0x30));
    EXPECT_EQ(SystemPalette::dot(SystemColor::blue, light), QColor(0x00, 0x7A, 0xFF));
}

TEST(SystemPaletteTest, AdjustedColourKeepsItsHue) {
    const QColor yellow = SystemPalette::text(SystemColor::yellow, light);
    EXPECT_NEAR(yellow.hue(), QColor(0xFF, 0xCC, 0x00).hue(), 3);
    const QColor green = SystemPalette::dot(SystemColor::green, light);
    EXPECT_NEAR(green.hue(), QColor(0x34, 0xC7, 0x59).hue(), 3);
}

}  // namespace
}  // namespace valdorn
