// Does what spawn --each does with the least that whoever keeps daemons has to do, in C:
// spawn_reader COUNT MEBIBYTES STAMP COMMAND [ARGUMENT...]. A child gets null, a pipe and a group of
// its own; a second thread reads the pipes and learns of the ends.
#define _GNU_SOURCE
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/pidfd.h>
#include <sys/wait.h>

#include "support/stamps.h"

static char* environment[] = {"PATH=/usr/bin:/bin", NULL};

static int epoll, output, process;
static long long known;
static sem_t ended;

static void listenTo(int descriptor) {
    struct epoll_event event = {EPOLLIN | EPOLLET, {.fd = descriptor}};
    if (epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) != 0)
        exit(1);
}

// Ends with the process.
static void* readAll(void* unused) {
    (void)unused;
    static char buffer[64 * 1024];
    struct epoll_event event;
    siginfo_t info;
    for (;;) {
        if (epoll_wait(epoll, &event, 1, -1) != 1)
            continue;
        if (event.data.fd == output) {
            while (read(output, buffer, sizeof buffer) > 0) {
            }
        } else if (waitid((idtype_t)P_PIDFD, (id_t)process, &info, WEXITED) == 0) {
            known = nanoseconds();
            if (info.si_code != CLD_EXITED || info.si_status != 0)
                exit(1);
            close(process);
            close(output);
            sem_post(&ended);
        }
    }
}

static void start(char** command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0)
        exit(1);
    const pid_t child = vfork();
    if (child == 0) {
        dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        setpgid(0, 0);
        execve(command[0], command, environment);
        _exit(127);
    }
    close(ends[1]);
    output = ends[0];
    process = pidfd_open(child, 0);
    listenTo(output);
    listenTo(process);
}

int main(int count, char** arguments) {
    if (count < 5)
        return 2;
    pthread_t thread;
    epoll = epoll_create1(EPOLL_CLOEXEC);
    if (sem_init(&ended, 0, 0) != 0 || pthread_create(&thread, NULL, readAll, NULL) != 0)
        return 1;
    grow(atol(arguments[2]));
    volatile long long* left = openStamp(arguments[3]);
    for (long number = atol(arguments[1]); number > 0; --number) {
        *left = 0;
        const long long begin = nanoseconds();
        start(arguments + 4);
        const long long launched = nanoseconds();
        sem_wait(&ended);
        printf("%lld %lld %lld\n", launched - begin, known - begin, *left ? known - *left : 0);
        rest();
    }
    return 0;
}
