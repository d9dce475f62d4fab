#include "StopSignals.h"

#include <algorithm>
#include <ctime>

#include <signal.h>

namespace valdorn::demo {
namespace {

sigset_t stopSet() {
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    return set;
}

}  // namespace

StopSignals::StopSignals() {
    const sigset_t set = stopSet();
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

void StopSignals::take(std::chrono::nanoseconds atMost) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(atMost);
    const timespec limit{static_cast<std::time_t>(seconds.count()), (atMost - seconds).count()};
    const sigset_t set = stopSet();
    if (sigtimedwait(&set, nullptr, &limit) > 0 && !ignored_) {
        requested_ = true;
    }
}

void StopSignals::wait(std::chrono::milliseconds time) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + time;
    for (Clock::duration left = time; !requested_ && left.count() > 0; left = end - Clock::now()) {
        take(left);
    }
}

void StopSignals::waitForStop() {
    while (!requested_) {
        wait(std::chrono::hours(1));
    }
}

bool StopSignals::isStopRequested() {
    if (!requested_) {
        take(std::chrono::nanoseconds::zero());
    }
    return requested_;
}

void restoreStopSignals() {
    const sigset_t set = stopSet();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

}  // namespace valdorn::demo
