#pragma once

#include <cerrno>
#include <chrono>
#include <thread>

namespace valdorn {

// Any thread. Whether an errno says that the kernel is out of something just now, whatever it was
// asked for: what was asked about may be there all the same.
inline bool isShortage(int errorNumber) {
    return errorNumber == EAGAIN || errorNumber == ENOMEM || errorNumber == EMFILE ||
           errorNumber == ENFILE || errorNumber == ENOLCK;
}

// Any thread; blocks. Tries again for a second while the kernel is short of something, and gives what
// the last try gave: a Result whose error says `isShortage`.
template <typename Attempt>
auto tryPastShortage(const Attempt& attempt) {
    constexpr int tries = 20;
    constexpr std::chrono::milliseconds pause{50};
    auto outcome = attempt();
    for (int again = 1; again < tries && !outcome && outcome.error().isShortage; ++again) {
        std::this_thread::sleep_for(pause);
        outcome = attempt();
    }
    return outcome;
}

}  // namespace valdorn
