#pragma once

#include <set>
#include <vector>

#include "platform/WindowHost.h"

namespace valdorn {

// Keeps what was shown and closed, in call order, and which windows stand open.
class RecordingWindowHost : public WindowHost {
public:
    std::vector<WindowDescription> shown;
    std::vector<WindowKind> closed;
    std::set<WindowKind> open;

    void show(const WindowDescription& description) override {
        shown.push_back(description);
        open.insert(description.kind);
    }

    void close(WindowKind kind) override {
        closed.push_back(kind);
        open.erase(kind);
    }
};

}  // namespace valdorn
