#pragma once

#include <string>

namespace valdorn {

// The clipboard. Main thread only.
class Pasteboard {
public:
    Pasteboard() = default;
    Pasteboard(const Pasteboard&) = delete;
    Pasteboard& operator=(const Pasteboard&) = delete;
    virtual ~Pasteboard() = default;

    // Replaces the clipboard's content with the text (UTF-8).
    virtual void setText(const std::string& text) = 0;

    // Offers text that was just selected with the mouse to a middle click, on desktops that have
    // that; the clipboard stays as it is.
    virtual void setSelectedText(const std::string& text) = 0;
};

}  // namespace valdorn
