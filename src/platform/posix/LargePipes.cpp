#include "platform/posix/LargePipes.h"

#include <algorithm>

#include <fcntl.h>

namespace valdorn {

void LargePipes::enlarge(const Descriptor& pipe) {
    const int number = pipe.number();
    if (noteAsking(number) || !isThereRoom())
        return;
    const int formerBytes = fcntl(number, F_GETPIPE_SZ);
    if (formerBytes >= 0 && fcntl(number, F_SETPIPE_SZ, largeBytes) >= 0)
        large_.push_back({number, formerBytes, askings_});
}

// True when the pipe is large already.
bool LargePipes::noteAsking(int number) {
    ++askings_;
    for (Large& one : large_) {
        if (one.number == number) {
            one.lastAsked = askings_;
            return true;
        }
    }
    return false;
}

// Takes it from a quiet child if need be. The kernel refuses while more is in the pipe than would
// fit, as with a child that is held back; that one keeps its room.
bool LargePipes::isThereRoom() {
    if (large_.size() < atMost)
        return true;
    const auto taken = std::find_if(large_.begin(), large_.end(), [this](const Large& one) {
        return askings_ - one.lastAsked > askingsUntilQuiet &&
               fcntl(one.number, F_SETPIPE_SZ, one.formerBytes) >= 0;
    });
    if (taken == large_.end())
        return false;
    large_.erase(taken);
    return true;
}

void LargePipes::forget(const Descriptor& pipe) {
    std::erase_if(large_, [&](const Large& one) { return one.number == pipe.number(); });
}

}  // namespace valdorn
