#include "ui/Announcements.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QEvent>
#include <utility>

#include "ui/Announcer.h"

namespace valdorn {

Announcements::Announcements() {
    QCoreApplication::instance()->installEventFilter(this);
}

Announcements::~Announcements() {
    QAccessible::setActive(false);
}

std::vector<std::string> Announcements::take() {
    return std::exchange(heard_, {});
}

// What appears is read out, when a window comes up as well. This platform has no bus to be on: every
// new widget is told that there are listeners.
bool Announcements::eventFilter(QObject* watched, QEvent* event) {
    const auto* const announcer = qobject_cast<Announcer*>(watched);
    if (announcer && event->type() == QEvent::Show && !event->spontaneous())
        heard_.push_back(announcer->accessibleName().toStdString());
    if (event->type() == QEvent::Polish)
        QAccessible::setActive(true);
    return QObject::eventFilter(watched, event);
}

}  // namespace valdorn
