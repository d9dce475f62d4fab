#include "platform/posix/LargePipes.h"

#include <fcntl.h>

namespace valdorn {

bool LargePipes::enlarge(const Descriptor& pipe) {
    if (count_ == atMost || fcntl(pipe.number(), F_SETPIPE_SZ, largeBytes) < 0)
        return false;
    ++count_;
    return true;
}

}  // namespace valdorn
