#pragma once

#include "platform/Pasteboard.h"

namespace valdorn {

// The desktop's clipboard. The application object outlives it.
class QtPasteboard : public Pasteboard {
public:
    void setText(const std::string& text) override;
    void setSelectedText(const std::string& text) override;
};

}  // namespace valdorn
