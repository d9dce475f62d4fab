// Does what hold does, in the ways of C: hold_reference WAY COUNT COMMAND [ARGUMENT...]. WAY is loop,
// one epoll for the pipes and pidfds of all children, or threads, one for each child, which reads its
// pipe and then waits for it.
#define _GNU_SOURCE
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/pidfd.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct child {
    pid_t pid;
    int output;
    int process;  // a pidfd, for the loop only
};

static char buffer[64 * 1024];

static struct child start(char** command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        exit(1);
    struct child born = {vfork(), ends[0], -1};
    if (born.pid == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execv(command[0], command);
        _exit(127);
    }
    close(ends[1]);
    return born;
}

static void* attend(void* argument) {
    struct child* child = argument;
    char text[4096];
    while (read(child->output, text, sizeof text) > 0) {
    }
    waitpid(child->pid, NULL, 0);
    return NULL;
}

static void listenTo(int epoll, int descriptor) {
    struct epoll_event event = {EPOLLIN | EPOLLET, {.fd = descriptor}};
    if (epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) != 0)
        exit(1);
}

// Until the end of the standard input, which only a whole program would do more with.
static void loop(int epoll, struct child* children, long count) {
    listenTo(epoll, STDIN_FILENO);
    for (long number = 0; number < count; ++number) {
        children[number].process = pidfd_open(children[number].pid, 0);
        listenTo(epoll, children[number].output);
        listenTo(epoll, children[number].process);
    }
    struct epoll_event event;
    while (epoll_wait(epoll, &event, 1, -1) == 1) {
        if (read(event.data.fd, buffer, sizeof buffer) == 0 && event.data.fd == STDIN_FILENO)
            return;
    }
}

static void awaitEndOfInput(void) {
    while (read(STDIN_FILENO, buffer, sizeof buffer) > 0) {
    }
}

int main(int count, char** arguments) {
    if (count < 4)
        return 2;
    struct rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    const int usesThreads = strcmp(arguments[1], "threads") == 0;
    const long wanted = atol(arguments[2]);
    struct child* children = calloc((size_t)wanted, sizeof(struct child));
    if (children == NULL)
        return 1;
    for (long number = 0; number < wanted; ++number) {
        pthread_t thread;
        children[number] = start(arguments + 3);
        if (usesThreads && pthread_create(&thread, NULL, attend, &children[number]) != 0)
            return 1;
    }
    puts("held");
    fflush(stdout);
    if (usesThreads)
        awaitEndOfInput();
    else
        loop(epoll_create1(EPOLL_CLOEXEC), children, wanted);
    for (long number = 0; number < wanted; ++number)
        kill(children[number].pid, SIGTERM);
    // Those that the threads wait for end with us.
    return 0;
}
