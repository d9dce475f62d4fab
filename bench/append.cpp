// Appends lines to a file that the log window follows: append FILE TOTAL BATCH.
//
// Prints how many lines it shows in the end, how many paintings the batches took, and for each batch
// the nanoseconds of computing on the main thread, painting included.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "support/LogWindow.h"

int main(int count, char** arguments) {
    if (count != 4)
        return 2;
    const long total = std::atol(arguments[2]);
    const long batch = std::atol(arguments[3]);
    QApplication application(count, arguments);
    std::ofstream file(arguments[1], std::ios::app);
    valdorn::LogWindow window(arguments[1]);
    const int paintingsBefore = window.paintings;
    std::vector<long long> times;
    for (long line = 0; line < total;) {
        for (long end = line + batch; line < end; ++line)
            file << "time=\"2026-03-09T14:05:00Z\" level=" << (line % 20 == 0 ? "warning" : "debug")
                 << " msg=\"step " << line
                 << ": docker exec in job container docker exec\" file=\"[executor.go:116]\"\n";
        file.flush();
        const long long begin = valdorn::computedFor();
        window.tailer->poll();
        window.settle();
        times.push_back(valdorn::computedFor() - begin);
    }
    std::printf("%zu %d", window.rows->rows().lines().size(), window.paintings - paintingsBefore);
    for (const long long time : times)
        std::printf(" %lld", time);
    std::printf("\n");
    std::fflush(stdout);
    _exit(0);
}
