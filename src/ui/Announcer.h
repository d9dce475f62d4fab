#pragma once

#include <QAccessible>
#include <QString>
#include <QWidget>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/MainQueue.h"

namespace valdorn {

// Tells whoever listens to a screen reader what changes in a window while the keyboard is elsewhere
// in it. To the eye it is nothing. Main thread only.
//
// On the accessibility bus it is a notification that appears: what screen readers on Linux read out
// without being asked to. While nobody is on that bus nothing is armed.
class Announcer : public QWidget, private QAccessible::ActivationObserver {
    Q_OBJECT

public:
    // How long news are gathered. A screen reader asks for the words after it has been told that
    // there are some; what came sooner would take the place of what it has not asked for yet.
    static constexpr std::chrono::milliseconds gathering{200};

    // A child of that part of a window. The queue outlives it.
    Announcer(QWidget& part, MainQueue& queue);
    ~Announcer() override;

    // To be called when something has changed that the eye sees. It is said once, together with what
    // else comes at the same time; later news of the same subject take the place of earlier ones.
    // Nothing is said of a window that cannot be seen, then or later. The subject is only compared
    // with others: it may go at any time, and what was said of it stays.
    void say(const QWidget& subject, const QString& news);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void accessibilityActiveChanged(bool active) override { isHeard_ = active; }
    void speak();

    MainQueue& queue_;
    bool isHeard_;
    std::vector<std::pair<const QWidget*, QString>> news_;  // in the order of their coming
    ScheduledTask speaking_;
};

}  // namespace valdorn
