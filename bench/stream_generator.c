// Prints the first BYTES bytes of a file that is repeated without end: stream_generator FILE BYTES [PIPE].
//
// In blocks of 64 KiB whose pages the pipe borrows, so that the generator takes next to no time; as
// copies where there is no pipe. With PIPE they are copied as a program's output is, and the pipe is
// asked to hold so many bytes.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

enum { blockBytes = 64 * 1024 };

static int isCopying = 0;

static void give(char* bytes, size_t size) {
    while (size > 0) {
        struct iovec part = {bytes, size};
        const ssize_t given =
            isCopying ? write(STDOUT_FILENO, bytes, size) : vmsplice(STDOUT_FILENO, &part, 1, 0);
        if (given > 0) {
            bytes += given;
            size -= (size_t)given;
        } else if (!isCopying) {
            isCopying = 1;
        } else {
            exit(1);
        }
    }
}

int main(int count, char** arguments) {
    if (count < 3)
        return 2;
    const int file = open(arguments[1], O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (file < 0 || fstat(file, &status) != 0 || status.st_size <= 0)
        return 1;
    const size_t size = (size_t)status.st_size;
    char* bytes = mmap(NULL, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    if (bytes == MAP_FAILED)
        return 1;
    if (count > 3) {
        isCopying = 1;
        if (fcntl(STDOUT_FILENO, F_SETPIPE_SZ, atoi(arguments[3])) < 0)
            return 1;
    }
    long long left = atoll(arguments[2]);
    for (size_t at = 0; left > 0;) {
        size_t block = size - at < blockBytes ? size - at : blockBytes;
        if ((long long)block > left)
            block = (size_t)left;
        give(bytes + at, block);
        left -= (long long)block;
        at = at + block == size ? 0 : at + block;
    }
    return 0;
}
