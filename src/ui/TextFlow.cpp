#include "ui/TextFlow.h"

#include <QStyle>

namespace valdorn::TextFlow {

QString inPlace(Qt::LayoutDirection layout, const QString& text) {
    if (layout == Qt::LeftToRight || !text.startsWith(separator))
        return text;
    return text.mid(separator.size()) + QLatin1Char(' ') + text.at(0);
}

int flags(Qt::LayoutDirection layout, Qt::Alignment alignment, const QString& text) {
    const auto direction =
        text.isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    return static_cast<int>(QStyle::visualAlignment(layout, alignment)) | direction;
}

QString marked(Qt::LayoutDirection layout, const QString& text) {
    constexpr QChar leftToRightMark(0x200E);
    if (layout == Qt::LeftToRight || text.isRightToLeft())
        return text;
    return leftToRightMark + text + leftToRightMark;
}

}  // namespace valdorn::TextFlow
