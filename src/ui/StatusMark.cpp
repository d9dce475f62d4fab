#include "ui/StatusMark.h"

#include <algorithm>

namespace valdorn {

namespace {

// Of a dot, and of a stroke.
int widthOn(int pixels) {
    return std::max(2, (pixels + 4) / 9);
}

// Between the parts, and around them.
int gapOn(int pixels) {
    return std::max(1, pixels / 11);
}

QRect lowerRightDot(int pixels) {
    const int width = widthOn(pixels);
    return {pixels - width - 1, pixels - width - 1, width, width};
}

StatusMark exclamation(int pixels) {
    const QRect dot = lowerRightDot(pixels);
    const int gap = gapOn(pixels);
    const int height = dot.width() * 5 / 2;
    const QRect stroke(dot.left(), dot.top() - gap - height, dot.width(), height);
    return {{stroke, dot}, (stroke | dot).adjusted(-gap, -gap, gap, gap)};
}

// The bird's feet go as a whole: half of one would be a blot.
StatusMark dots(int pixels) {
    constexpr double footShare = 0.3;  // of the width, left of the feet
    const QRect last = lowerRightDot(pixels);
    const int gap = gapOn(pixels);
    const int step = last.width() + gap;
    const QRect first = last.translated(-2 * step, 0);
    QRect ground = (first | last).adjusted(-gap, -gap, gap, gap);
    ground.setLeft(std::min(ground.left(), static_cast<int>(footShare * pixels)));
    return {{first, last.translated(-step, 0), last}, ground};
}

}  // namespace

StatusMark StatusMark::of(SystemColor color, int pixels) {
    switch (color) {
        case SystemColor::red:
            return exclamation(pixels);
        case SystemColor::yellow:
            return dots(pixels);
        case SystemColor::secondary:
        case SystemColor::green:
        case SystemColor::orange:
        case SystemColor::blue:
            break;
    }
    return {};
}

}  // namespace valdorn
