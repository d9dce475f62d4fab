#include "ui/PlainText.h"

#include <QTextDocument>

namespace valdorn::PlainText {

QString oneLine(QString text) {
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    for (const char16_t lineBreak : {u'\n', u'\r', u'\v', u'\f', u'\u0085', u'\u2028', u'\u2029'})
        text.replace(QChar(lineBreak), QLatin1Char(' '));
    return text;
}

QString toolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

}  // namespace valdorn::PlainText
