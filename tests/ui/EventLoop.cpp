#include "ui/EventLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

namespace valdorn {

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
    QTimer patienceTimer;
    patienceTimer.setSingleShot(true);
    patienceTimer.start(patience);
    while (!condition() && patienceTimer.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

void runReadyEvents() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

}  // namespace valdorn
