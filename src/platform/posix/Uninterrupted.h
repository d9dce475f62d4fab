#pragma once

#include <cerrno>

namespace valdorn {

// Any thread. Makes a call, and makes it again while a signal interrupts it: signals are for whoever
// handles them, and not to be noticed by anybody else. `call` answers -1 and errno on failure. Not for
// close(): Linux has closed by then.
template <typename Call>
auto uninterrupted(const Call& call) {
    auto answer = call();
    while (answer == -1 && errno == EINTR)
        answer = call();
    return answer;
}

}  // namespace valdorn
