#pragma once

#include <string>
#include <vector>

#include "platform/Pasteboard.h"

namespace valdorn {

// Keeps every text that was put on the clipboard or selected.
class RecordingPasteboard : public Pasteboard {
public:
    std::vector<std::string> texts;
    std::vector<std::string> selectedTexts;

    void setText(const std::string& text) override { texts.push_back(text); }
    void setSelectedText(const std::string& text) override { selectedTexts.push_back(text); }
};

}  // namespace valdorn
