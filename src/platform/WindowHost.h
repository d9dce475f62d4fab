#pragma once

#include <string>

namespace valdorn {

enum class WindowKind { settings, log, status, onboarding };

// How a window looks from outside. Every window has a title bar and can be closed.
struct WindowDescription {
    WindowKind kind = WindowKind::status;
    std::string title;
    int contentWidthPoints = 0;
    int contentHeightPoints = 0;
    bool resizable = false;
};

// The program's windows, at most one of each kind. Main thread only.
class WindowHost {
public:
    WindowHost() = default;
    WindowHost(const WindowHost&) = delete;
    WindowHost& operator=(const WindowHost&) = delete;
    virtual ~WindowHost() = default;

    // Creates the window, centred, at its first call for that kind; in every case shows it, brings
    // it to the front and gives it the keyboard. Later calls for a kind bring back the same window
    // with the state of its view kept.
    virtual void show(const WindowDescription& description) = 0;

    // Hides the window, if there is one. What the window's own close button does, too: a window
    // lives until the program ends.
    virtual void close(WindowKind kind) = 0;
};

}  // namespace valdorn
