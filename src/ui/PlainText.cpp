#include "ui/PlainText.h"

#include <QStringDecoder>
#include <QTextBoundaryFinder>
#include <QTextDocument>

namespace valdorn::PlainText {

namespace {

constexpr QChar ellipsis(0x2026);
constexpr QChar breakHere(0x200B);  // no width, and a line may end there

// As wide as Qt lets a tooltip be, in letters of middling width.
constexpr qsizetype toolTipLine = 80;
// A word that is longer is broken, or the tooltip would be as wide as the word.
constexpr qsizetype longestWord = toolTipLine / 2;

// What is looked at around a cut to see whether it parts a character: a family of emoji is shorter.
constexpr qsizetype context = 64;

// The end of the last character that is over at `most`, which the text is longer than.
qsizetype endOfStart(const QString& text, qsizetype most) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme,
                               QStringView(text).left(most + context));
    finder.setPosition(most);
    const qsizetype cut = finder.isAtBoundary() ? most : finder.toPreviousBoundary();
    return cut > 0 ? cut : most - (text.at(most).isLowSurrogate() ? 1 : 0);
}

// The start of the first character that begins in the last `most`.
qsizetype startOfEnd(const QString& text, qsizetype most) {
    const qsizetype earliest = text.size() - most;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme,
                               QStringView(text).right(most + context));
    finder.setPosition(context);
    const qsizetype skipped = finder.isAtBoundary() ? 0 : finder.toNextBoundary() - context;
    return skipped < most ? earliest + skipped
                          : earliest + (text.at(earliest).isLowSurrogate() ? 1 : 0);
}

QString withBreaks(const QString& text) {
    QString result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype word = 0;
    for (qsizetype from = 0, to = 0; (to = finder.toNextBoundary()) > 0; from = to) {
        word = text.at(from).isSpace() ? 0 : word + 1;
        if (word > longestWord) {
            result += breakHere;
            word = 1;
        }
        result += QStringView(text).mid(from, to - from);
    }
    return result;
}

}  // namespace

QString fromUtf8(std::string_view text) {
    // Qt drops a byte order mark at the beginning unless told that it is a character like others.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

QString oneLine(QString text) {
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    for (const char16_t lineBreak : {u'\n', u'\r', u'\v', u'\f', u'\u0085', u'\u2028', u'\u2029'})
        text.replace(QChar(lineBreak), QLatin1Char(' '));
    return text;
}

QString shortened(const QString& text) {
    if (text.size() <= 2 * endLength)
        return text;
    return text.left(endOfStart(text, endLength)) + ellipsis +
           text.mid(startOfEnd(text, endLength));
}

QString toolTip(const QString& text) {
    QString shown =
        text.size() <= toolTipLength ? text : text.left(endOfStart(text, toolTipLength)) + ellipsis;
    if (shown.size() <= toolTipLine && !Qt::mightBeRichText(shown))
        return shown;
    return QLatin1String("<p style=\"white-space:pre-wrap\">") + withBreaks(shown).toHtmlEscaped() +
           QLatin1String("</p>");
}

}  // namespace valdorn::PlainText
