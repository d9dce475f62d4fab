#include "ui/PromptField.h"

#include <QEvent>
#include <QFontMetrics>
#include <QStyle>
#include <QStyleOptionFrame>

#include "ui/SystemPalette.h"

namespace valdorn {

PromptField::PromptField(const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    updatePlaceholder();
}

QSize PromptField::minimumSizeHint() const {
    ensurePolished();
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QFontMetrics metrics = fontMetrics();
    const int air = 2 * metrics.averageCharWidth();  // more than the margins beside the text
    const QSize shown(metrics.horizontalAdvance(placeholderText()) + air, metrics.height());
    const QSize framed = style()->sizeFromContents(QStyle::CT_LineEdit, &option, shown, this);
    return QLineEdit::minimumSizeHint().expandedTo(QSize(framed.width(), 0));
}

void PromptField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        updatePlaceholder();
}

void PromptField::updatePlaceholder() {
    const QColor readable =
        SystemPalette::text(SystemColor::secondary, SystemPalette::onBase(palette()));
    if (palette().color(QPalette::PlaceholderText) == readable)
        return;
    QPalette own = palette();
    own.setColor(QPalette::PlaceholderText, readable);
    setPalette(own);
}

}  // namespace valdorn
