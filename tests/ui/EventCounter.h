#pragma once

#include <QEvent>
#include <QObject>
#include <map>

namespace valdorn {

// Counts the events of one type that come to the objects whose events it filters.
class EventCounter : public QObject {
public:
    explicit EventCounter(QEvent::Type type) : type_(type) {}

    std::map<const QObject*, int> counts;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == type_)
            ++counts[watched];
        return false;
    }

private:
    const QEvent::Type type_;
};

}  // namespace valdorn
