#pragma once

#include <ctime>
#include <fstream>

#include <unistd.h>

namespace valdorn {

// Nanoseconds that this thread has computed for.
inline long long computedFor() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

inline long residentBytes() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

}  // namespace valdorn
