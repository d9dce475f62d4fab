#include "ui/VerticalScrollArea.h"

#include <QEvent>
#include <QScrollBar>

#include "ui/StrongFrame.h"

namespace valdorn {

VerticalScrollArea::VerticalScrollArea(QWidget* content) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    new StrongFrame(*verticalScrollBar());
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
}

QSize VerticalScrollArea::minimumSizeHint() const {
    const int bar = verticalScrollBar()->sizeHint().width();
    return {widget()->minimumSizeHint().width() + bar, 0};
}

// A content that needs more width now needs it from the window.
bool VerticalScrollArea::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

}  // namespace valdorn
