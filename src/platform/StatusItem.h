#pragma once

#include <string>

#include "platform/SystemColor.h"

namespace valdorn {

class MenuModel;

// A symbol in one colour, and what a screen reader says for it.
struct StatusIcon {
    std::string symbol;  // "bird" or "bird.fill"
    SystemColor color = SystemColor::secondary;
    std::string accessibilityDescription;

    friend bool operator==(const StatusIcon&, const StatusIcon&) = default;
};

// The program's one place in the status bar. Main thread only.
//
// It may be used before there is a bar to show it, and while the bar restarts: what was set last
// is what the bar shows as soon as it is there. Setting an equal icon again sends nothing. The
// tooltip is always "Valdorn". A primary click opens the menu like a secondary one.
class StatusItem {
public:
    // Width in points for "as wide as the icon".
    static constexpr int variableLength = -1;

    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    // Attaches the menu. The model is borrowed and outlives the item; set once.
    virtual void setMenu(MenuModel& menu) = 0;

    // Shows the icon, unless the spinner runs: then it stands when the spinner has stopped.
    virtual void setIcon(const StatusIcon& icon) = 0;

    // No icon: the place is empty but for the spinner.
    virtual void clearIcon() = 0;

    // Puts a spinner of 16 x 16 points in the middle of the item and turns it at a few frames a
    // second; takes it out again. Both do nothing when that is already so.
    virtual void startSpinner() = 0;
    virtual void stopSpinner() = 0;
    virtual bool isSpinning() const = 0;

    // The item's width in points, or variableLength. A bar that gives every item a square takes it
    // as the proportion between the spinner and its surroundings.
    virtual void setLength(int points) = 0;
};

}  // namespace valdorn
