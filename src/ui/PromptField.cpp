#include "ui/PromptField.h"

#include <QEvent>

#include "ui/SystemPalette.h"

namespace valdorn {

PromptField::PromptField(const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    updatePlaceholder();
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
