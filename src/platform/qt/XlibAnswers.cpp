#include "platform/qt/XlibAnswers.h"

#include <QGuiApplication>

#include <X11/Xlib.h>

namespace valdorn {

void readXlibAnswers() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->display())
        XSync(x11->display(), 0);  // keeps the events
}

}  // namespace valdorn
