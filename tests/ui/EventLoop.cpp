#include "ui/EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

namespace valdorn {

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
    const QDeadlineTimer end(patience);
    // Waiting for "more events" may go on after events that made the condition true; the tick
    // gives it another look.
    QTimer tick;
    tick.start(std::chrono::milliseconds{10});
    while (!condition() && !end.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

void runReadyEvents() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

}  // namespace valdorn
