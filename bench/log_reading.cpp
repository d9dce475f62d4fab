// Reads a log as the log window does when it opens: log_reading FILE READINGS.
//
// Prints what was found (lines, and their bytes with a line end each), by how many bytes the resident
// memory has grown at the first reading, and how many nanoseconds each reading took.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "logs/LogTailer.h"
#include "platform/posix/PosixFileSystem.h"
#include "support/Measuring.h"

namespace {

// Nothing is ever put on it: reading is done where it stands.
class UnusedQueue : public valdorn::MainQueue {
public:
    void post(Task /*task*/) override { std::abort(); }
    valdorn::ScheduledTask after(std::chrono::milliseconds /*delay*/, Task /*task*/) override {
        std::abort();
    }
    valdorn::ScheduledTask every(std::chrono::milliseconds /*period*/, Task /*task*/) override {
        std::abort();
    }
    TimePoint now() const override { return {}; }
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    UnusedQueue queue;
    const valdorn::PosixFileSystem files;
    const auto tailer = valdorn::LogTailer::create(queue, files, arguments[1]);
    const long residentBefore = valdorn::residentBytes();
    for (int reading = 0; reading < std::atoi(arguments[2]); ++reading) {
        const auto begin = std::chrono::steady_clock::now();
        tailer->reload();
        const std::chrono::nanoseconds took = std::chrono::steady_clock::now() - begin;
        if (reading == 0) {
            std::uint64_t bytes = 0;
            for (const valdorn::LogLine& line : tailer->lines())
                bytes += line->size() + 1;
            std::printf("%zu %llu %ld", tailer->lines().size(),
                        static_cast<unsigned long long>(bytes),
                        valdorn::residentBytes() - residentBefore);
        }
        std::printf(" %lld", static_cast<long long>(took.count()));
    }
    std::printf("\n");
}
