// What programs in C and in C++ measure launches with.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

// Nanoseconds on the clock that all processes share.
static inline long long nanoseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

// Makes this process larger by that many MiB of resident memory, for the rest of its life.
static inline void grow(long mebibytes) {
    const size_t size = (size_t)mebibytes << 20;
    void* memory = malloc(size + 1);
    if (memory == NULL)
        exit(1);
    memset(memory, 1, size + 1);
    __asm__ volatile("" : : "g"(memory) : "memory");  // or the compiler leaves all of it out
}

// A time that is shared through a file with whoever else maps it; the file is made if it is missing.
static inline volatile long long* openStamp(const char* path) {
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, sizeof(long long)) != 0)
        exit(1);
    void* memory = mmap(NULL, sizeof(long long), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (memory == MAP_FAILED)
        exit(1);
    return (volatile long long*)memory;
}

// Long enough for all threads to sleep again, each on its processor. Without it each launch moves
// them to another one, and whose caches are cold is all that is measured.
static inline void rest(void) {
    const struct timespec aWhile = {0, 1000000};
    nanosleep(&aWhile, NULL);
}
