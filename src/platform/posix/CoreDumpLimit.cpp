#include "platform/posix/CoreDumpLimit.h"

namespace valdorn {

CoreDumpLimit::CoreDumpLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) != 0)
        return;
    before_ = limit;
    limit.rlim_cur = 0;
    // Lowering is always allowed.
    setrlimit(RLIMIT_CORE, &limit);
}

}  // namespace valdorn
