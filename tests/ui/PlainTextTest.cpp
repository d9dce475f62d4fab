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

QString repeated(const char16_t* text, int times) {
    return QString::fromUtf16(text).repeated(times);
}

TEST(PlainTextTest, KeepsTheEndsOfWhatNoWindowIsWideEnoughFor) {
    const QString ends = repeated(u"a", 1000) + repeated(u"b", 1000);
    EXPECT_EQ(PlainText::shortened(ends), ends);
    const QString longer = repeated(u"a", 1000) + repeated(u"x", 9) + repeated(u"b", 1000);
    EXPECT_EQ(PlainText::shortened(longer),
              repeated(u"a", 1000) + QChar(0x2026) + repeated(u"b", 1000));
}

TEST(PlainTextTest, CutsBetweenCharacters) {
    for (const char16_t* const character : {u"e\u0301", u"🏗", u"👩\u200D👩\u200D👧"}) {
        const QString straddling = QString::fromUtf16(character);
        const QString text = repeated(u"a", 999) + straddling + repeated(u"x", 100) + straddling +
                             repeated(u"b", 999);
        EXPECT_EQ(PlainText::shortened(text),
                  repeated(u"a", 999) + QChar(0x2026) + repeated(u"b", 999));
        EXPECT_EQ(PlainText::shortened(u'a' + text + u'b'),
                  repeated(u"a", 1000) + QChar(0x2026) + repeated(u"b", 1000));
    }
}

TEST(PlainTextTest, CutsARowOfFlagsBetweenTwo) {
    // Which two letters are a flag is told by the beginning of the row only.
    constexpr char16_t flag[] = u"\U0001F1F3\U0001F1F4";
    const QString text =
        repeated(u"a", 970) + repeated(flag, 10) + repeated(u"x", 10) + repeated(flag, 10);
    EXPECT_EQ(PlainText::shortened(text + repeated(u"b", 990)),
              repeated(u"a", 970) + repeated(flag, 7) + QChar(0x2026) + repeated(flag, 2) +
                  repeated(u"b", 990));
}

TEST(PlainTextTest, CutsACharacterWithoutEnd) {
    for (const char16_t* const mark : {u"\u0301", u"\U0001F3FB"}) {
        const QString endless = u'a' + repeated(mark, 5000);
        for (const QString& text : {endless, endless + u'b', endless + u'\u0301'}) {
            const QString shown = PlainText::shortened(text);
            EXPECT_LE(shown.size(), 2001);
            EXPECT_GE(shown.size(), 1000);
            EXPECT_TRUE(shown.isValidUtf16());
        }
    }
}

TEST(PlainTextTest, TooltipWrapsALongTextEvenWithinAWord) {
    for (const char16_t* const word : {u"W", u"word  and <b>", u"e\u0301"}) {
        const QString text = repeated(word, 300).left(900);
        QTextDocument shown;
        shown.setHtml(PlainText::toolTip(text));
        shown.setTextWidth(600);
        EXPECT_LE(shown.idealWidth(), 600);
        EXPECT_EQ(shown.toPlainText().remove(QChar(0x200B)), text);
        EXPECT_FALSE(shown.toPlainText().contains(QStringLiteral(u"\u200B\u0301")));
    }
}

TEST(PlainTextTest, TooltipTellsTheBeginningOfAnEndlessText) {
    QTextDocument shown;
    shown.setHtml(PlainText::toolTip(repeated(u"one two ", 1000)));
    EXPECT_EQ(shown.toPlainText(), repeated(u"one two ", 125) + QChar(0x2026));
}

}  // namespace
}  // namespace valdorn
