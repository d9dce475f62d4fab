// Does what spawn does, in the ways of C: spawn_reference WAY COUNT MEBIBYTES STAMP COMMAND
// [ARGUMENT...]. WAY is how a child is made (vfork, fork, posix_spawn: its end is waited for with
// waitpid), or pidfd: vfork, and its end learned from a pidfd in an epoll.
#define _GNU_SOURCE
#include <spawn.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/pidfd.h>
#include <sys/wait.h>

#include "support/stamps.h"

static char* environment[] = {"PATH=/usr/bin:/bin", NULL};

static pid_t start(const char* way, char** command) {
    pid_t child = -1;
    if (strcmp(way, "posix_spawn") == 0) {
        if (posix_spawn(&child, command[0], NULL, NULL, command, environment) != 0)
            exit(1);
        return child;
    }
    child = strcmp(way, "fork") == 0 ? fork() : vfork();
    if (child == 0) {
        execve(command[0], command, environment);
        _exit(127);
    }
    return child;
}

static void awaitByPidfd(int epoll, pid_t child) {
    const int process = pidfd_open(child, 0);
    struct epoll_event event = {EPOLLIN, {.fd = process}};
    siginfo_t info;
    if (process < 0 || epoll_ctl(epoll, EPOLL_CTL_ADD, process, &event) != 0 ||
        epoll_wait(epoll, &event, 1, -1) != 1 ||
        waitid((idtype_t)P_PIDFD, (id_t)process, &info, WEXITED) != 0)
        exit(1);
    close(process);
}

int main(int count, char** arguments) {
    if (count < 6)
        return 2;
    const int usesEpoll = strcmp(arguments[1], "pidfd") == 0;
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    grow(atol(arguments[3]));
    volatile long long* left = openStamp(arguments[4]);
    for (long number = atol(arguments[2]); number > 0; --number) {
        *left = 0;
        const long long begin = nanoseconds();
        const pid_t child = start(arguments[1], arguments + 5);
        const long long launched = nanoseconds();
        int status = 0;
        if (usesEpoll)
            awaitByPidfd(epoll, child);
        else if (waitpid(child, &status, 0) != child || status != 0)
            return 1;
        const long long known = nanoseconds();
        printf("%lld %lld %lld\n", launched - begin, known - begin, *left ? known - *left : 0);
        rest();
    }
    return 0;
}
