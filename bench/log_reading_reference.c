// The least that finding a log's last 5000 lines can take: log_reading_reference FILE READINGS.
//
// Searches for line feeds backwards from the end, in blocks of 64 KiB, and keeps nothing. Prints what
// log_reading prints.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { wantedLines = 5000, blockBytes = 64 * 1024 };

static char block[blockBytes];

static long residentBytes(void) {
    long pages = 0;
    FILE* file = fopen("/proc/self/statm", "r");
    if (file == NULL || fscanf(file, "%*d %ld", &pages) != 1)
        exit(1);
    fclose(file);
    return pages * sysconf(_SC_PAGESIZE);
}

static long long nanoseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

// Where the last lines begin; the file ends with a line feed. Their number goes to *lines.
static off_t search(int file, off_t end, int* lines) {
    *lines = 0;
    while (end > 0) {
        const off_t from = end > blockBytes ? end - blockBytes : 0;
        const size_t size = (size_t)(end - from);
        if (pread(file, block, size, from) != (ssize_t)size)
            exit(1);
        const char* feed = block + size;
        while ((feed = memrchr(block, '\n', (size_t)(feed - block))) != NULL) {
            // The first one found ends the last line.
            if ((*lines)++ == wantedLines) {
                *lines = wantedLines;
                return from + (feed - block) + 1;
            }
        }
        end = from;
    }
    return 0;
}

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    const long residentBefore = residentBytes();
    for (int reading = 0; reading < atoi(arguments[2]); ++reading) {
        const long long begin = nanoseconds();
        const int file = open(arguments[1], O_RDONLY | O_CLOEXEC);
        struct stat status;
        if (file < 0 || fstat(file, &status) != 0)
            return 1;
        int lines = 0;
        const off_t start = search(file, status.st_size, &lines);
        close(file);
        const long long took = nanoseconds() - begin;
        if (reading == 0)
            printf("%d %lld %ld", lines, (long long)(status.st_size - start),
                   residentBytes() - residentBefore);
        printf(" %lld", took);
    }
    printf("\n");
    return 0;
}
