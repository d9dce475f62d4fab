#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "platform/WindowHost.h"

namespace valdorn {

// Keeps what was shown and closed, in call order, and which windows stand open.
class RecordingWindowHost : public WindowHost {
public:
    std::vector<WindowDescription> shown;
    std::vector<WindowKind> closed;                   // by the program
    std::map<WindowKind, WindowDescription> windows;  // made so far, as described at first
    std::set<WindowKind> open;

    void show(const WindowDescription& description) override {
        shown.push_back(description);
        windows.emplace(description.kind, description);
        open.insert(description.kind);
    }

    void close(WindowKind kind) override {
        closed.push_back(kind);
        open.erase(kind);
    }

    // Plays the user who closes a window.
    void closeAsUser(WindowKind kind) { open.erase(kind); }

    // The window that has the keyboard, if one is open.
    std::optional<WindowKind> front() const {
        const auto latest = std::find_if(shown.rbegin(), shown.rend(), [this](const auto& window) {
            return open.count(window.kind) > 0;
        });
        return latest == shown.rend() ? std::nullopt : std::optional(latest->kind);
    }
};

}  // namespace valdorn
