// Launches children that print and exit at once: last_words ROUNDS CHILD SIZE...
//
// Prints for each size how many bytes of the CHILD's pattern came as they should in all rounds
// together, and how many were wanted.
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <string>

#include "platform/posix/PosixChildLauncher.h"

namespace {

// How many bytes of one child came, in order and unchanged.
long received(valdorn::ChildLauncher& launcher, const std::string& child, const char* size) {
    long bytes = 0;
    bool isWhole = true;
    std::binary_semaphore ended{0};
    const auto launched =
        launcher.launch({child, {"print", size}, "/", {}},
                        {[&](std::string_view chunk, const valdorn::OutputCredit&) {
                             for (const char byte : chunk)
                                 isWhole = isWhole && byte == static_cast<char>('a' + bytes++ % 23);
                         },
                         [&ended](valdorn::ChildExit) { ended.release(); }});
    if (!launched)
        std::exit(1);
    ended.acquire();
    return isWhole ? bytes : 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 4)
        return 2;
    valdorn::PosixChildLauncher launcher;
    const long rounds = std::atol(arguments[1]);
    for (int index = 3; index < count; ++index) {
        long bytes = 0;
        for (long round = 0; round < rounds; ++round)
            bytes += received(launcher, arguments[2], arguments[index]);
        std::printf("%ld %ld\n", bytes, rounds * std::atol(arguments[index]));
    }
}
