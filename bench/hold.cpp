// Holds idle children by the program's own launcher: hold COUNT COMMAND [ARGUMENT...].
//
// Prints a line when all run, and ends them at the end of its standard input.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <unistd.h>

#include "platform/posix/PosixChildLauncher.h"

int main(int count, char** arguments) {
    if (count < 3)
        return 2;
    const valdorn::ChildCommand command{arguments[2], {arguments + 3, arguments + count}, "/", {}};
    std::vector<std::unique_ptr<valdorn::ChildProcess>> children;
    {
        valdorn::PosixChildLauncher launcher;
        for (long number = std::atol(arguments[1]); number > 0; --number) {
            auto child = launcher.launch(
                command,
                {[](std::string_view, const valdorn::OutputCredit&) {}, [](valdorn::ChildExit) {}});
            if (!child)
                return 1;
            children.push_back(std::move(child.value()));
        }
        std::puts("held");
        std::fflush(stdout);
        char end = 0;
        while (read(STDIN_FILENO, &end, 1) > 0) {
        }
        for (const auto& child : children)
            child->terminate();
        for (const auto& child : children) {
            while (child->isRunning())
                usleep(1000);
        }
    }
}
