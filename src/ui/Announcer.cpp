#include "ui/Announcer.h"

#include <QEvent>
#include <QStringList>
#include <algorithm>

#include "ui/AccessibleRole.h"

namespace valdorn {

Announcer::Announcer(QWidget& part, MainQueue& queue)
    : QWidget(&part), queue_(queue), isHeard_(QAccessible::isActive()) {
    QAccessible::installActivationObserver(this);
    part.installEventFilter(this);
    setObjectName(QStringLiteral("announcer"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    // Next to nothing, so that whoever explores the window finds what stands there, and not this.
    setGeometry(0, 0, 1, 1);
    AccessibleRole::set(*this, QAccessible::Notification);
    hide();
}

Announcer::~Announcer() {
    QAccessible::removeActivationObserver(this);
}

void Announcer::say(const QWidget& subject, const QString& news) {
    if (!isHeard_ || !parentWidget()->isVisible() || window()->isMinimized())
        return;
    const auto known = std::find_if(news_.begin(), news_.end(), [&subject](const auto& entry) {
        return entry.first == &subject;
    });
    if (known != news_.end())
        known->second = news;
    else
        news_.emplace_back(&subject, news);
    if (news_.size() == 1)
        speaking_ = queue_.after(gathering, [this] { speak(); });
}

void Announcer::speak() {
    QStringList texts;
    for (const auto& [subject, text] : news_)
        texts += text;
    news_.clear();
    hide();
    setAccessibleName(texts.join(QLatin1String(". ")));
    show();
}

// A window that is opened again, or was minimised, has no news from the time before.
bool Announcer::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() && event->type() == QEvent::Hide) {
        news_.clear();
        speaking_.cancel();
        hide();
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace valdorn
