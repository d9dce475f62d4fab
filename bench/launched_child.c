// The child of the benchmarks, as small as a process can be. launched_child
//   stamp FILE   waits until it is long alone, notes the time in the file and exits at once
//   idle         waits for a signal
//   print BYTES  prints that many bytes of a pattern and exits at once
#include <string.h>

#include "support/stamps.h"

static int stamp(const char* path) {
    volatile long long* left = openStamp(path);
    const struct timespec aWhile = {0, 2000000};
    nanosleep(&aWhile, NULL);
    *left = nanoseconds();
    _exit(0);
}

static int print(long bytes) {
    char* text = malloc((size_t)bytes);
    if (text == NULL)
        return 1;
    for (long at = 0; at < bytes; ++at)
        text[at] = (char)('a' + at % 23);
    for (long done = 0; done < bytes;) {
        const ssize_t written = write(STDOUT_FILENO, text + done, (size_t)(bytes - done));
        if (written <= 0)
            return 1;
        done += written;
    }
    _exit(0);
}

int main(int count, char** arguments) {
    if (count == 3 && strcmp(arguments[1], "stamp") == 0)
        return stamp(arguments[2]);
    if (count == 2 && strcmp(arguments[1], "idle") == 0)
        return pause();
    if (count == 3 && strcmp(arguments[1], "print") == 0)
        return print(atol(arguments[2]));
    return 2;
}
