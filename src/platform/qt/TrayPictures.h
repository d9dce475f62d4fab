#pragma once

#include <QIcon>
#include <functional>

#include "platform/StatusItem.h"

namespace valdorn {

// How the status item's states look in the bar, drawn by whoever makes the item. Equal arguments
// give equal pictures. Called on the main thread.
struct TrayPictures {
    int spinnerFrames = 1;  // positions of the spinner in one turn
    std::function<QIcon(const StatusIcon& icon)> icon;
    std::function<QIcon(int frame, int itemWidthPoints)> spinner;
    std::function<QIcon()> empty;  // holds the place and shows nothing
};

}  // namespace valdorn
