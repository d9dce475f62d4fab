#pragma once

#include <string>
#include <vector>

#include "platform/Pasteboard.h"

namespace valdorn {

// Keeps every text that was put on the clipboard.
class RecordingPasteboard : public Pasteboard {
public:
    std::vector<std::string> texts;

    void setText(const std::string& text) override { texts.push_back(text); }
};

}  // namespace valdorn
