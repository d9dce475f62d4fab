#include "ui/TextStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <algorithm>

namespace valdorn::TextStyles {

namespace {

constexpr double smallestPoints = 8.0;

// Relative to the body text.
double scaleOf(TextStyle style) {
    switch (style) {
        case TextStyle::title2:
            return 17.0 / 13.0;
        case TextStyle::title3:
            return 15.0 / 13.0;
        case TextStyle::callout:
            return 12.0 / 13.0;
        case TextStyle::caption:
            return 10.0 / 13.0;
        case TextStyle::body:
            break;
    }
    return 1.0;
}

// The desktop's font may be given in pixels; then it has no size in points.
double bodyPoints() {
    const QFont body = QApplication::font();
    return body.pointSizeF() > 0 ? body.pointSizeF() : QFontInfo(body).pointSizeF();
}

QFont sized(QFont font, TextStyle style) {
    font.setPointSizeF(std::max(bodyPoints() * scaleOf(style), smallestPoints));
    return font;
}

}  // namespace

QFont font(TextStyle style, QFont::Weight weight) {
    QFont font = sized(QApplication::font(), style);
    font.setWeight(weight);
    return font;
}

QFont monospaced(TextStyle style) {
    return sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), style);
}

}  // namespace valdorn::TextStyles
