#include "ui/log/LogDrag.h"

#include <algorithm>

namespace valdorn {

void LogDrag::moveTo(QPointF place, int height) {
    place_ = place;
    const int y = static_cast<int>(place.y());
    beyond_ = y < 0 ? y : std::max(y - height + 1, 0);
    if (beyond_ == 0)
        scrolling_.reset();
    else if (!scrolling_)
        scrolling_ = queue_.every(period, [this] { scroll_(beyond_); });
}

void LogDrag::end() {
    place_.reset();
    scrolling_.reset();
}

}  // namespace valdorn
