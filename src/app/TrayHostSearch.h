#pragma once

#include <chrono>
#include <functional>

#include "platform/MainQueue.h"
#include "platform/TrayHost.h"

namespace valdorn {

// Decides when the status item may be made, and when there is no bar to show it.
//
// A notifier host is taken at once. An XEmbed tray is taken only after the waiting time, because
// at login a panel's tray may come before its notifier host. Where the item is, it stays as long as
// that host is there: it does not jump from bar to bar. Main thread only.
//
//   state      a host comes                                  the host goes  waiting time is over
//   searching  notifier: shown                               -              any: shown; none: missing
//   shown      -                                             lost           -
//   lost       notifier, or that which was lost: shown       -              any: shown; none: missing
//   missing    as lost; another after second thoughts: shown -              -
class TrayHostSearch {
public:
    // Whether a host of each kind is there at this moment.
    struct Probes {
        std::function<bool()> notifier;
        std::function<bool()> xembed;
    };

    struct Callbacks {
        // A host has come: make the status item for it now, unless it is there still.
        std::function<void(TrayHost)> onHostThere;
        std::function<void()> onHostMissing;   // nothing has shown the item for waitingTime
        std::function<void()> onHostAppeared;  // after onHostMissing: something shows it again
    };

    // Long enough for a slow login, short enough that nobody gives the program up.
    static constexpr std::chrono::seconds waitingTime{30};

    // What an XEmbed tray that comes late is given, so that a notifier host of the same panel can
    // still come first. Leaves a second for the icon to appear within two.
    static constexpr std::chrono::seconds secondThoughts{1};

    // The queue outlives this. No callback is called before start().
    TrayHostSearch(MainQueue& mainQueue, Probes probes, Callbacks callbacks);

    void start();

    // To be called when either probe may have another answer.
    void hostsChanged();

private:
    enum class State { idle, searching, shown, lost, missing };

    void wait(State state);
    void onWaitingTimeOver();
    bool isThere(TrayHost host) const;
    void takeAnyHost();
    void show(TrayHost host);

    MainQueue& mainQueue_;
    const Probes probes_;
    const Callbacks callbacks_;
    State state_ = State::idle;
    TrayHost host_ = TrayHost::notifier;  // the last that was taken; before, the one taken at once
    ScheduledTask timer_;
};

}  // namespace valdorn
