// Does what its arguments say, one after the other:
//   print:TEXT  writes the text          fill:COUNT  writes that many bytes of the pattern
//   slow:TEXT   writes byte by byte      await       waits for SIGUSR1
//   exit:CODE   exits                    raise:SIGNAL  ends by that signal
//   leave:TEXT  leaves a process behind that keeps the output open, waits for SIGUSR1, writes the
//               text and ends; says "grandchild PID"
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ChildTools.h"

namespace {

void await() {
    sigset_t nudge;
    sigemptyset(&nudge);
    sigaddset(&nudge, SIGUSR1);
    int signal = 0;
    sigwait(&nudge, &signal);
}

void leave(const std::string& text) {
    const pid_t grandchild = fork();
    if (grandchild < 0)
        std::exit(1);
    if (grandchild == 0) {
        alarm(children::lifetimeSeconds);
        await();
        children::print(text);
        std::_Exit(0);
    }
    children::print("grandchild " + std::to_string(grandchild) + "\n");
}

void play(const std::string& step) {
    const auto colon = step.find(':');
    const std::string verb = step.substr(0, colon);
    const std::string object = colon == std::string::npos ? "" : step.substr(colon + 1);
    if (verb == "print")
        children::print(object);
    else if (verb == "fill")
        children::print(children::pattern(std::stoul(object)));
    else if (verb == "slow")
        for (const char byte : object)
            children::print({&byte, 1});
    else if (verb == "leave")
        leave(object);
    else if (verb == "await")
        await();
    else if (verb == "exit")
        std::exit(std::stoi(object));
    else if (verb == "raise")
        raise(std::stoi(object));
    else
        std::exit(99);
}

}  // namespace

int main(int count, char** arguments) {
    alarm(children::lifetimeSeconds);
    // Before the first output: whoever has read it may send the signal.
    sigset_t nudge;
    sigemptyset(&nudge);
    sigaddset(&nudge, SIGUSR1);
    sigprocmask(SIG_BLOCK, &nudge, nullptr);
    for (int index = 1; index < count; ++index)
        play(arguments[index]);
    return 0;
}
