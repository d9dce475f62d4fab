// Holds idle children by the program's own launcher: hold COUNT [COMMAND [ARGUMENT...]]; without a
// command they sleep for ever.
//
// Prints a line when all run, and ends them when it is asked to end itself (SIGTERM, SIGINT).
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "platform/posix/PosixChildLauncher.h"

int main(int count, char** arguments) {
    const long wanted = count > 1 ? std::atol(arguments[1]) : 0;
    if (wanted <= 0) {
        std::fprintf(stderr, "usage: hold COUNT [PATH-OF-A-COMMAND [ARGUMENT...]]\n");
        return 2;
    }
    // Blocked before there is a second thread, so that the signal waits for us.
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    sigaddset(&end, SIGINT);
    sigprocmask(SIG_BLOCK, &end, nullptr);
    std::vector<std::string> words(arguments + 2, arguments + count);
    if (words.empty())
        words = {"/bin/sleep", "infinity"};
    const valdorn::ChildCommand command{words[0], {words.begin() + 1, words.end()}, "/", {}};
    std::vector<std::unique_ptr<valdorn::ChildProcess>> children;
    valdorn::PosixChildLauncher launcher;
    for (long number = wanted; number > 0; --number) {
        auto child = launcher.launch(
            command,
            {[](std::string_view, const valdorn::OutputCredit&) {}, [](valdorn::ChildExit) {}});
        if (!child)
            break;
        children.push_back(std::move(child.value()));
    }
    const bool areAllHeld = std::ssize(children) == wanted;
    if (!areAllHeld) {
        std::fprintf(stderr, "hold: %s cannot be launched\n", words[0].c_str());
    } else {
        std::puts("held");
        std::fflush(stdout);
        int signal = 0;
        sigwait(&end, &signal);
    }
    for (const auto& child : children)
        child->terminate();
    while (std::any_of(children.begin(), children.end(),
                       [](const auto& child) { return child->isRunning(); }))
        usleep(1000);
    return areAllHeld ? 0 : 1;
}
