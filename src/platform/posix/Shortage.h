#pragma once

#include <cerrno>

namespace valdorn {

// Any thread. Whether an errno says that the kernel is out of something just now, whatever it was
// asked for: what was asked about may be there all the same.
inline bool isShortage(int errorNumber) {
    return errorNumber == EAGAIN || errorNumber == ENOMEM || errorNumber == EMFILE ||
           errorNumber == ENFILE;
}

}  // namespace valdorn
