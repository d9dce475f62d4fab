#include "platform/posix/DescriptorLimit.h"

#include <algorithm>
#include <mutex>

#include <sys/resource.h>

namespace valdorn {

namespace {

// Room for whatever the rest of the program opens between two launches.
constexpr rlim_t headroom = 256;

}  // namespace

void makeRoomForDescriptors(int newest) {
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);
    const rlim_t needed = static_cast<rlim_t>(newest) + headroom;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= needed)
        return;
    // A refusal is no harm yet: the call that runs out of descriptors will say so.
    limit.rlim_cur = std::min(std::max(limit.rlim_cur * 2, needed), limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace valdorn
