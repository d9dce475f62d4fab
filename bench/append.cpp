// Feeds an open log window that shows as many lines as it can: append TOTAL BATCH.
//
// Prints how many lines it shows in the end, how many paintings the batches took, and for each batch
// the nanoseconds of computing on the main thread, painting included.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/BusyLog.h"
#include "support/LogWindow.h"

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    const long total = std::atol(arguments[1]);
    const long batch = std::atol(arguments[2]);
    QApplication application(count, arguments);
    const auto linesBefore = static_cast<long>(valdorn::LogTailer::maxLines);
    valdorn::BusyLog log(linesBefore);
    valdorn::LogWindow window(log.path());
    const int paintingsBefore = window.paintings;
    std::vector<long long> times;
    for (long lines = 0; lines < total; lines += batch) {
        log.append(valdorn::busyText(linesBefore + lines, batch));
        const long long begin = valdorn::computedFor();
        window.tailer->poll();
        valdorn::settle();
        times.push_back(valdorn::computedFor() - begin);
    }
    std::printf("%zu %d", window.rows->rows().lines().size(), window.paintings - paintingsBefore);
    for (const long long time : times)
        std::printf(" %lld", time);
    std::printf("\n");
}
