#include <QApplication>
#include <QFontInfo>
#include <QFontMetricsF>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/TextStyle.h"

namespace valdorn {
namespace {

TEST(TextStyleTest, SizesFollowTheDesktopsFont) {
    const Looks looks(Scheme::light, 13);
    EXPECT_NEAR(TextStyles::font(TextStyle::body).pointSizeF(), 13, 0.01);
    EXPECT_NEAR(TextStyles::font(TextStyle::title2).pointSizeF(), 17, 0.01);
    EXPECT_NEAR(TextStyles::font(TextStyle::title3).pointSizeF(), 15, 0.01);
    EXPECT_NEAR(TextStyles::font(TextStyle::callout).pointSizeF(), 12, 0.01);
    EXPECT_NEAR(TextStyles::font(TextStyle::caption).pointSizeF(), 10, 0.01);
    EXPECT_NEAR(TextStyles::monospaced(TextStyle::callout).pointSizeF(), 12, 0.01);
}

TEST(TextStyleTest, NothingIsSmallerThanEightPoints) {
    const Looks looks(Scheme::light, 9);
    EXPECT_NEAR(TextStyles::font(TextStyle::caption).pointSizeF(), 8, 0.01);
    EXPECT_NEAR(TextStyles::monospaced(TextStyle::caption).pointSizeF(), 8, 0.01);
}

TEST(TextStyleTest, FontGivenInPixelsHasItsSize) {
    const Looks looks(Scheme::light);
    QFont font = QApplication::font();
    font.setPixelSize(40);
    QApplication::setFont(font);
    EXPECT_NEAR(TextStyles::font(TextStyle::body).pointSizeF(), QFontInfo(font).pointSizeF(), 0.01);
    EXPECT_GT(TextStyles::font(TextStyle::caption).pointSizeF(), 20);
}

TEST(TextStyleTest, FamilyIsTheDesktopsAndTheWeightTheWantedOne) {
    const Looks looks(Scheme::light);
    const QFont font = TextStyles::font(TextStyle::title3, QFont::Bold);
    EXPECT_EQ(font.family(), QStringLiteral("DejaVu Sans"));
    EXPECT_EQ(font.weight(), QFont::Bold);
    EXPECT_EQ(TextStyles::font(TextStyle::body).weight(), QFont::Normal);
}

TEST(TextStyleTest, MonospacedLettersAreAllOfOneWidth) {
    const QFontMetricsF metrics(TextStyles::monospaced(TextStyle::body));
    EXPECT_NEAR(metrics.horizontalAdvance(QLatin1Char('i')),
                metrics.horizontalAdvance(QLatin1Char('W')), 0.01);
}

}  // namespace
}  // namespace valdorn
