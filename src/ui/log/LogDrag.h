#pragma once

#include <QPointF>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "platform/MainQueue.h"

namespace valdorn {

// A selection that is being drawn with the mouse: while the mouse is held above or below the text,
// the text comes to it. Main thread only.
class LogDrag {
public:
    // How often the text moves then: often enough to look smooth.
    static constexpr std::chrono::milliseconds period{50};

    // Called with the pixels to scroll by; as many as the mouse is away from the text, so that the
    // hand sets the speed.
    using Scroll = std::function<void(int)>;

    LogDrag(MainQueue& queue, Scroll scroll) : queue_(queue), scroll_(std::move(scroll)) {}

    bool isUnderWay() const { return place_.has_value(); }
    // Where the mouse is; there must be a drag.
    QPointF place() const { return *place_; }

    void begin(QPointF place) { place_ = place; }

    // The mouse is there now, over a text of that height.
    void moveTo(QPointF place, int height);

    // The button is up, or nobody sees it any more. May be called twice.
    void end();

private:
    MainQueue& queue_;
    const Scroll scroll_;
    std::optional<QPointF> place_;
    int beyond_ = 0;  // how far below the text the mouse is; above it, negative
    std::optional<ScheduledTask> scrolling_;
};

}  // namespace valdorn
