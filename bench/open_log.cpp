// Opens the log window on a file and ends when it is painted: open_log FILE.
//
// Prints how many lines it shows and by how many bytes the resident memory has grown since the
// program was idle.
#include <cstdio>

#include "support/LogWindow.h"
#include "support/Offscreen.h"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: open_log FILE\n");
        return 2;
    }
    valdorn::runOffscreen();
    QApplication application(count, arguments);
    const long before = valdorn::residentBytes();
    const valdorn::LogWindow window(arguments[1]);
    std::printf("%zu %ld\n", window.rows->rows().lines().size(), valdorn::residentBytes() - before);
    std::fflush(stdout);
    _exit(window.paintings.number() > 0 ? 0 : 1);
}
