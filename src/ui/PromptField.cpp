#include "ui/PromptField.h"

#include <QEvent>
#include <QFontMetrics>
#include <QStyle>
#include <QStyleOptionFrame>

#include "ui/StrongFrame.h"
#include "ui/SystemPalette.h"

namespace valdorn {

PromptField::PromptField(const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    recolor();
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
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::ParentChange)
        recolor();
}

void PromptField::recolor() {
    const QPalette around = SystemPalette::around(*this);
    QPalette own;  // only what is set here counts, the rest stays inherited
    own.setColor(QPalette::PlaceholderText,
                 SystemPalette::textOnBase(SystemColor::secondary, around));
    const auto frame = StrongFrame::source(around, StrongFrame::Where::highContrast);
    own.setColor(QPalette::Window, frame.value_or(around.color(QPalette::Window)));
    // Setting a palette announces its change, which leads back here.
    for (const auto role : {QPalette::PlaceholderText, QPalette::Window})
        if (palette().color(role) != own.color(role))
            return setPalette(own);
}

}  // namespace valdorn
