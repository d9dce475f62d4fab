// The least that reading lines from standard input can take: stream_reference WORK LOG.
//
// Reads blocks of 64 KiB. WORK is "split": finds each line's end, with memchr; "keep": and appends
// the lines worth keeping to the file LOG, block by block; "search": and looks for each text that
// matters in each line, one search after the other. Prints how many lines there were, how many were
// kept, and how many held a text.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { blockBytes = 64 * 1024, longestLine = 64000 };

static char buffer[longestLine + blockBytes];
static char kept[longestLine + blockBytes + 1];
static size_t keptBytes = 0;
static long lines = 0, keptLines = 0, tellingLines = 0;
static int isKeeping = 0, isSearching = 0;

static int holds(const char* line, size_t size, const char* text) {
    return memmem(line, size, text, strlen(text)) != NULL;
}

static int tells(const char* line, size_t size) {
    const int finished = holds(line, size, "Worker") && holds(line, size, "finished (");
    return holds(line, size, " repo is ") + holds(line, size, "Running job with maxParallel") +
               finished + holds(line, size, "declare successfully") +
               holds(line, size, "no route to host") + holds(line, size, "permission denied") +
               holds(line, size, "with version: ") >
           0;
}

static int isKept(const char* line, size_t size) {
    if (size >= 6 && memcmp(line, "Error:", 6) == 0)
        return 1;
    return size >= 6 && memcmp(line, "time=\"", 6) == 0 && !holds(line, size, "level=debug");
}

static void take(const char* line, size_t size) {
    ++lines;
    if (isKeeping && isKept(line, size)) {
        memcpy(kept + keptBytes, line, size + 1);
        keptBytes += size + 1;
        ++keptLines;
    }
    if (isSearching)
        tellingLines += tells(line, size);
}

static void flush(int log) {
    if (keptBytes > 0 && write(log, kept, keptBytes) != (ssize_t)keptBytes)
        exit(1);
    keptBytes = 0;
}

int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    isSearching = strcmp(arguments[1], "search") == 0;
    isKeeping = isSearching || strcmp(arguments[1], "keep") == 0;
    const int log = open(arguments[2], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    size_t incomplete = 0;
    ssize_t got = 0;
    while ((got = read(STDIN_FILENO, buffer + incomplete, blockBytes)) > 0) {
        const char* end = buffer + incomplete + got;
        const char* line = buffer;
        const char* feed = buffer + incomplete;
        while ((feed = memchr(feed, '\n', (size_t)(end - feed))) != NULL) {
            take(line, (size_t)(feed - line));
            line = ++feed;
        }
        flush(log);
        incomplete = (size_t)(end - line);
        if (incomplete > longestLine)
            incomplete = 0;
        memmove(buffer, line, incomplete);
    }
    printf("%ld %ld %ld\n", lines, keptLines, tellingLines);
    return 0;
}
