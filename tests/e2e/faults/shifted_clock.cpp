// Preloaded into a program, shifts the clocks that it sees: by as many nanoseconds as stand in the
// file that VALDORN_SHIFTED_CLOCK names, three signed 64-bit numbers: the wall clock, the clock that
// counts a suspended computer's sleep, and the one that does not. What the kernel's own timers do stays
// as it is, and so does the raw clock, which no product asks: puppets tell their times by it.
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

struct Shifts {
    std::int64_t wall;
    std::int64_t boot;
    std::int64_t steady;
};

constexpr std::int64_t second = 1'000'000'000;

const volatile Shifts* shifts() {
    static const volatile Shifts* const mapped = []() -> const volatile Shifts* {
        const char* path = std::getenv("VALDORN_SHIFTED_CLOCK");
        const int file = path ? open(path, O_RDONLY | O_CLOEXEC) : -1;
        if (file < 0)
            return nullptr;
        void* start = mmap(nullptr, sizeof(Shifts), PROT_READ, MAP_SHARED, file, 0);
        close(file);
        return start == MAP_FAILED ? nullptr : static_cast<const volatile Shifts*>(start);
    }
    ();
    return mapped;
}

std::int64_t shiftOf(clockid_t clock) {
    const volatile Shifts* all = shifts();
    if (!all)
        return 0;
    switch (clock) {
        case CLOCK_REALTIME:
        case CLOCK_REALTIME_COARSE:
            return all->wall;
        case CLOCK_BOOTTIME:
            return all->boot;
        case CLOCK_MONOTONIC:
        case CLOCK_MONOTONIC_COARSE:
            return all->steady;
        default:
            return 0;
    }
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const long answer = syscall(SYS_clock_gettime, clock, time);
    if (answer != 0)
        return static_cast<int>(answer);
    const std::int64_t all = time->tv_sec * second + time->tv_nsec + shiftOf(clock);
    time->tv_sec = all / second;
    time->tv_nsec = all % second;
    return 0;
}

extern "C" int gettimeofday(timeval* time, void*) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

extern "C" time_t time(time_t* into) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (into)
        *into = now.tv_sec;
    return now.tv_sec;
}
