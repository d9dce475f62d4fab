#pragma once

#include <chrono>

namespace valdorn::demo {

// SIGTERM and SIGINT, taken note of while waiting instead of whenever they come. Single-threaded;
// one object per process, made before anything is waited for.
class StopSignals {
public:
    StopSignals();  // blocks both signals for the rest of the process

    // Waits until the time is over or a stop is requested, now or earlier.
    void wait(std::chrono::milliseconds time);
    void waitForStop();

    // True once a stop was requested. Looks for a pending signal first.
    bool isStopRequested();

    void ignoreFromNowOn() { ignored_ = true; }

private:
    void take(std::chrono::nanoseconds atMost);

    bool ignored_ = false;
    bool requested_ = false;
};

// Lets both signals do what they do by default again, for a process forked off this one.
void restoreStopSignals();

}  // namespace valdorn::demo
