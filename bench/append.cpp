// Feeds an open log window that shows as many lines as it can: append TOTAL BATCH.
//
// Prints how many lines it shows in the end, how many paintings the batches took, and for each batch
// the nanoseconds of computing on the main thread, painting included.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/BusyLog.h"
#include "support/LogWindow.h"
#include "support/Offscreen.h"

int main(int count, char** arguments) {
    const long total = count == 3 ? std::atol(arguments[1]) : 0;
    const long batch = count == 3 ? std::atol(arguments[2]) : 0;
    if (total <= 0 || batch <= 0) {
        std::fprintf(stderr, "usage: append LINES LINES-IN-A-BATCH\n");
        return 2;
    }
    valdorn::runOffscreen();
    QApplication application(count, arguments);
    const auto linesBefore = static_cast<long>(valdorn::LogTailer::maxLines);
    valdorn::BusyLog log(linesBefore);
    valdorn::LogWindow window(log.path());
    window.paintings.take();
    std::vector<long long> times;
    for (long lines = 0; lines < total; lines += batch) {
        log.append(valdorn::busyText(linesBefore + lines, batch));
        const long long begin = valdorn::computedFor();
        window.tailer->poll();
        valdorn::settle();
        times.push_back(valdorn::computedFor() - begin);
    }
    std::printf("%zu %zu", window.rows->rows().lines().size(), window.paintings.number());
    for (const long long time : times)
        std::printf(" %lld", time);
    std::printf("\n");
}
