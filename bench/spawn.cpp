// Launches a command again and again with the program's own launcher:
// spawn COUNT MEBIBYTES STAMP COMMAND [ARGUMENT...].
//
// The process is MEBIBYTES large. Prints three numbers of nanoseconds for each launch: how long the
// call took, how long until the exit was known, and how long it was known after the time that the
// command has noted in STAMP, a shared file; 0 when it has noted none.
#include <cstdio>
#include <semaphore>

#include "platform/posix/PosixChildLauncher.h"
#include "support/stamps.h"

int main(int count, char** arguments) {
    if (count < 5)
        return 2;
    grow(std::atol(arguments[2]));
    volatile long long& left = *openStamp(arguments[3]);
    const valdorn::ChildCommand command{
        arguments[4], {arguments + 5, arguments + count}, "/", {"PATH=/usr/bin:/bin"}};
    valdorn::PosixChildLauncher launcher;
    for (long number = std::atol(arguments[1]); number > 0; --number) {
        left = 0;
        long long known = 0;
        std::binary_semaphore ended{0};
        const long long begin = nanoseconds();
        const auto child =
            launcher.launch(command, {[](std::string_view, const valdorn::OutputCredit&) {},
                                      [&known, &ended](valdorn::ChildExit) {
                                          known = nanoseconds();
                                          ended.release();
                                      }});
        const long long launched = nanoseconds();
        if (!child)
            return 1;
        ended.acquire();
        std::printf("%lld %lld %lld\n", launched - begin, known - begin, left ? known - left : 0);
        rest();
    }
}
