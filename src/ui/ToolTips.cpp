#include "ui/ToolTips.h"

#include <QHelpEvent>
#include <QToolTip>

#include "ui/PlainText.h"

namespace valdorn {

void ToolTips::answer(const QHelpEvent& event, QWidget& widget, const QString& text, bool isCut) {
    if (isCut)
        QToolTip::showText(event.globalPos(), PlainText::toolTip(text), &widget);
    else
        QToolTip::hideText();
}

}  // namespace valdorn
