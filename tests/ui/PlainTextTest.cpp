#include <QTextDocument>

#include <gtest/gtest.h>

#include "ui/PlainText.h"

namespace valdorn {
namespace {

TEST(PlainTextTest, EachLineBreakBecomesABlank) {
    EXPECT_EQ(PlainText::oneLine(QStringLiteral("one\ntwo\r\nthree\rfour\vfive\fsix")),
              QStringLiteral("one two three four five six"));
    EXPECT_EQ(PlainText::oneLine(QString::fromUtf16(u"a\u0085b\u2028c\u2029d")),
              QStringLiteral("a b c d"));
    EXPECT_EQ(PlainText::oneLine(QStringLiteral("one two")), QStringLiteral("one two"));
}

TEST(PlainTextTest, TooltipOfOrdinaryTextIsTheText) {
    EXPECT_EQ(PlainText::toolTip(QStringLiteral("R&D 1 < 2")), QStringLiteral("R&D 1 < 2"));
}

TEST(PlainTextTest, TooltipShowsMarkupAsTheCharactersThatItIs) {
    const QString name = QStringLiteral("<b>bold</b> & <img src=x>");
    QTextDocument shown;
    shown.setHtml(PlainText::toolTip(name));
    EXPECT_EQ(shown.toPlainText(), name);
}

}  // namespace
}  // namespace valdorn
