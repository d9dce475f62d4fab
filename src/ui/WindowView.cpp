#include "ui/WindowView.h"

#include <QHideEvent>
#include <QShowEvent>

#include "ui/FocusRing.h"

namespace valdorn {

WindowView::WindowView(QSize leastSize) : leastSize_(leastSize) {
    new FocusRing(*this);
}

QSize WindowView::minimumSizeHint() const {
    return QWidget::minimumSizeHint().expandedTo(leastSize_);
}

// What the window system does of its own accord is minimising and coming back from it.
void WindowView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        appeared();
}

void WindowView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        vanished();
}

}  // namespace valdorn
