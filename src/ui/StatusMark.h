#pragma once

#include <QRect>
#include <vector>

#include "platform/SystemColor.h"

namespace valdorn {

// What the bird in the status bar bears beside its colour, so that whoever does not tell red from
// yellow and grey tells the statuses by their shape: three dots for what takes its time (yellow), an
// exclamation mark for what needs somebody (red). Other colours bear nothing.
//
// A mark stands in the lower right corner, where the bird leaves most room. Its parts are whole
// pixels: there are too few of them for soft edges. Pure; any thread.
struct StatusMark {
    std::vector<QRect> parts;  // none for a colour that bears nothing
    QRect ground;              // where the bird gives way: the mark and some room around it

    // The mark on a square picture of that many pixels, at least 16.
    static StatusMark of(SystemColor color, int pixels);
};

}  // namespace valdorn
