#include "ui/StyledFont.h"

#include <QEvent>

namespace valdorn {

StyledFont::StyledFont(QWidget& widget, TextStyle style, QFont::Weight weight)
    : QObject(&widget), widget_(widget), style_(style), weight_(weight) {
    widget.installEventFilter(this);
    followParent();
}

void StyledFont::followParent() {
    if (parent_)
        parent_->removeEventFilter(this);
    parent_ = widget_.parentWidget();
    if (parent_)
        parent_->installEventFilter(this);
    apply();
}

void StyledFont::apply() {
    widget_.setFont(TextStyles::font(style_, weight_));
}

bool StyledFont::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &widget_ && event->type() == QEvent::ParentChange)
        followParent();
    else if (watched != &widget_ && event->type() == QEvent::FontChange)
        apply();
    return QObject::eventFilter(watched, event);
}

}  // namespace valdorn
