// To be loaded before a program (LD_PRELOAD): its pipes keep their usual size, as where the kernel
// allows no larger ones.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

// Not for its children.
__attribute__((constructor)) static void stayHere(void) {
    unsetenv("LD_PRELOAD");
}

int fcntl64(int descriptor, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* argument = va_arg(rest, void*);
    va_end(rest);
    if (command == F_SETPIPE_SZ) {
        errno = EPERM;
        return -1;
    }
    return (int)syscall(SYS_fcntl, descriptor, command, argument);
}

int fcntl(int descriptor, int command, ...) __attribute__((alias("fcntl64")));
