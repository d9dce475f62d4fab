#include "ui/PromptField.h"

#include <QEvent>

#include "ui/SystemPalette.h"

namespace valdorn {

PromptField::PromptField(const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    updatePlaceholder();
}

QSize PromptField::minimumSizeHint() const {
    ensurePolished();
    constexpr int hinted = 17;  // so many letters x are in a line edit's hint, with what is around
    const int around =
        sizeHint().width() - hinted * fontMetrics().horizontalAdvance(QLatin1Char('x'));
    const int shown = fontMetrics().horizontalAdvance(placeholderText()) + around;
    return QLineEdit::minimumSizeHint().expandedTo(QSize(shown, 0));
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
