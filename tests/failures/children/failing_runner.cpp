// Stands for the outside executable, as small and quick as can be:
//   register  puts the marker into its folder
//   daemon    writes its id into the file "launches" of its folder, says that it is connected, and
//             waits. SIGUSR1: prints a lot, and dies. SIGTERM: says so, and ends
// Every line that begins with "time=" or "Error:" is to be found in the runner's log.
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "Flood.h"

namespace {

constexpr unsigned lifetimeSeconds = 120;  // one that a failed test has forgotten ends by itself

int ownId = 0;

void print(const char* text) {
    for (size_t left = strlen(text); left > 0;) {
        const ssize_t written = write(STDOUT_FILENO, text, left);
        if (written < 0)
            _exit(7);  // nobody reads
        text += written;
        left -= static_cast<size_t>(written);
    }
}

void say(const char* word) {
    char line[128];
    snprintf(line, sizeof line, "time=\"now\" level=info msg=\"%s %d\"\n", word, ownId);
    print(line);
}

void printALot() {
    static char text[static_cast<size_t>(flood::lines) * 160];
    char* end = text;
    for (int line = 0; line < flood::lines; ++line) {
        const char* const form = line % flood::keptEvery == 0
                                     ? "Error: %d.%d\n"
                                     : "  | %d.%d some output of a job that nobody "
                                       "keeps, as long as lines mostly are\n";
        end += snprintf(end, 160, form, ownId, line);
    }
    print(text);
}

int registerRunner() {
    print("registering\n");
    const int marker = open(".runner", O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    print(marker >= 0 ? "registered\n" : "Error: no marker\n");
    return marker >= 0 ? 0 : 1;
}

void noteLaunch() {
    char line[32];
    const int length = snprintf(line, sizeof line, "%d\n", ownId);
    const int launches = open("launches", O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (write(launches, line, static_cast<size_t>(length)) != length)
        _exit(8);
    close(launches);
}

int runDaemon() {
    sigset_t orders;
    sigemptyset(&orders);
    sigaddset(&orders, SIGUSR1);
    sigaddset(&orders, SIGTERM);
    sigprocmask(SIG_BLOCK, &orders, nullptr);
    noteLaunch();
    say("begins");
    say("with version: v1.2.3, declare successfully");
    int order = 0;
    sigwait(&orders, &order);
    if (order == SIGUSR1) {
        printALot();
        say("dies");
        return 1;
    }
    say("ends");
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    alarm(lifetimeSeconds);
    ownId = getpid();
    return count > 1 && strcmp(arguments[1], "register") == 0 ? registerRunner() : runDaemon();
}
