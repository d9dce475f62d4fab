#include "ui/StyledLabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

#include "ui/StyledFont.h"
#include "ui/SystemPalette.h"
#include "ui/TextFlow.h"

namespace valdorn {

StyledLabel::StyledLabel(TextStyle style, std::optional<SystemColor> color, QFont::Weight weight)
    : color_(color) {
    setTextFormat(Qt::PlainText);
    new StyledFont(*this, style, weight);
    recolor();
}

void StyledLabel::setColor(std::optional<SystemColor> color) {
    color_ = color;
    recolor();
}

void StyledLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        recolor();
}

// Qt would leave a text that is written from left to right on the left of a mirrored window.
void StyledLabel::paintEvent(QPaintEvent* event) {
    if (layoutDirection() == Qt::LeftToRight)
        return QLabel::paintEvent(event);
    QPainter painter(this);
    const int flags = TextFlow::flags(layoutDirection(), alignment(), text());
    style()->drawItemText(&painter, contentsRect(), flags | (wordWrap() ? Qt::TextWordWrap : 0),
                          palette(), isEnabled(), text(), foregroundRole());
}

void StyledLabel::recolor() {
    const QPalette around = SystemPalette::around(*this);
    QPalette own;  // only what is set here counts, the rest stays inherited
    if (color_) {
        // What is disabled looks so in every colour.
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
            own.setColor(group, QPalette::WindowText, SystemPalette::text(*color_, around));
    }
    // Setting a palette announces its change, which leads back here.
    const bool isSet = testAttribute(Qt::WA_SetPalette) == color_.has_value();
    if (!isSet ||
        (color_ && palette().color(QPalette::WindowText) != own.color(QPalette::WindowText)))
        setPalette(own);
}

}  // namespace valdorn
