#include <gtest/gtest.h>

#include "ui/TextFlow.h"

namespace valdorn {
namespace {

constexpr auto usual = Qt::LeftToRight;
constexpr auto mirrored = Qt::RightToLeft;

const QString hebrew = QStringLiteral("\u05e9\u05dc\u05d5\u05dd.");

TEST(TextFlowTest, SeparatorGoesToTheSideOfWhatItFollows) {
    EXPECT_EQ(TextFlow::inPlace(usual, QStringLiteral("· up 4:05")), QStringLiteral("· up 4:05"));
    EXPECT_EQ(TextFlow::inPlace(mirrored, QStringLiteral("· up 4:05")),
              QStringLiteral("up 4:05 ·"));
    EXPECT_EQ(TextFlow::inPlace(mirrored, QStringLiteral("4:05")), QStringLiteral("4:05"));
}

TEST(TextFlowTest, AlignmentIsTheLayoutsAndTheDirectionTheTexts) {
    const int inUsual = TextFlow::flags(usual, Qt::AlignLeft, QStringLiteral("end."));
    EXPECT_TRUE(inUsual & Qt::AlignLeft);
    EXPECT_TRUE(inUsual & Qt::TextForceLeftToRight);
    const int inMirrored = TextFlow::flags(mirrored, Qt::AlignLeft, QStringLiteral("end."));
    EXPECT_TRUE(inMirrored & Qt::AlignRight);
    EXPECT_TRUE(inMirrored & Qt::AlignAbsolute);
    EXPECT_TRUE(inMirrored & Qt::TextForceLeftToRight);
    EXPECT_TRUE(TextFlow::flags(usual, Qt::AlignLeft, hebrew) & Qt::TextForceRightToLeft);
}

TEST(TextFlowTest, MarksHoldATextTogetherWhereTheLayoutGoesTheOtherWay) {
    EXPECT_EQ(TextFlow::marked(usual, QStringLiteral("mini (1)")), QStringLiteral("mini (1)"));
    EXPECT_EQ(TextFlow::marked(mirrored, QStringLiteral("mini (1)")),
              QStringLiteral("\u200emini (1)\u200e"));
    EXPECT_EQ(TextFlow::marked(mirrored, hebrew), hebrew);
}

}  // namespace
}  // namespace valdorn
