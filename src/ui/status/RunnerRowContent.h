#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/MainQueue.h"
#include "platform/SystemColor.h"
#include "platform/ThreadAnnotations.h"

namespace valdorn {

class RunnerManager;
class UpdateHints;

// What a row of the status window says about its runner: a value, made anew whenever something may
// have changed and compared with what stands there. All texts are UTF-8 and as the runner gives
// them, with whatever is in them.
struct RunnerRowContent {
    struct Hint {
        std::string text;
        SystemColor color = SystemColor::secondary;

        // Whether there is something newer.
        bool isOffer() const { return color != SystemColor::secondary; }

        friend bool operator==(const Hint&, const Hint&) = default;
    };

    std::string name;
    SystemColor dotColor = SystemColor::secondary;
    std::string statusText;
    std::optional<std::string> version;    // "· runner 0.2.11"
    std::optional<std::string> uptime;     // "· up 4:05", only while the child runs
    std::optional<Hint> updateHint;        // how the version compares with the latest release
    std::optional<std::string> buildLine;  // "Building owner/name (Workflow/job)"
    bool isRunning = false;                // what the button does hangs on this, not on the status

    // Main thread only.
    static RunnerRowContent of(const RunnerManager& runner, UpdateHints& hints,
                               MainQueue::TimePoint now) VALDORN_ON_MAIN_THREAD;

    friend bool operator==(const RunnerRowContent&, const RunnerRowContent&) = default;
};

// "4:05", from an hour on "1:04:05", and hours go on counting after a day; a negative time is none.
// Pure; any thread.
std::string elapsedText(std::chrono::seconds elapsed);

}  // namespace valdorn
