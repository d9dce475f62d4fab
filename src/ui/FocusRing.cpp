#include "ui/FocusRing.h"

#include <QApplication>
#include <QEvent>

#include "ui/SystemPalette.h"

namespace valdorn {

FocusRing::FocusRing(QWidget& window) : QObject(&window), window_(window) {
    window.installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* control) { surround(control); });
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        surround(QApplication::focusWidget());
    return QObject::eventFilter(watched, event);
}

void FocusRing::surround(QWidget* control) {
    delete frame_;
    if (!control || !window_.isAncestorOf(control) ||
        !SystemPalette::isHighContrast(SystemPalette::around(*control)))
        return;
    frame_ = new QFocusFrame(&window_);
    frame_->setWidget(control);
}

}  // namespace valdorn
