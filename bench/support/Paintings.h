#pragma once

#include <QEvent>
#include <QWidget>
#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

namespace valdorn {

// Notes when a widget is painted. Main thread; either may go first.
class Paintings : public QObject {
public:
    using Clock = std::chrono::steady_clock;

    void watch(QWidget& widget) { widget.installEventFilter(this); }

    std::size_t number() const { return times_.size(); }
    std::vector<Clock::time_point> take() { return std::exchange(times_, {}); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            times_.push_back(Clock::now());
        return QObject::eventFilter(watched, event);
    }

private:
    std::vector<Clock::time_point> times_;
};

}  // namespace valdorn
