// Launches a command again and again with the program's own launcher, one child after the other:
// spawn COUNT COMMAND [ARGUMENT...].
//
// Prints three medians in microseconds: how long the launch call took, how long until the exit of
// the command was known, and how long an exit was known after it happened. The last is measured with
// as many children that note the time as they go, since a command does not tell.
//
// spawn --each COUNT MEBIBYTES STAMP COMMAND [ARGUMENT...] makes the process MEBIBYTES large and
// prints the three numbers of each launch, in nanoseconds. The command may note the time of its exit
// in the file STAMP; the last number is 0 when it has not.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <semaphore>
#include <string>
#include <vector>

#include "platform/posix/PosixChildLauncher.h"
#include "support/stamps.h"

namespace {

using Words = std::vector<std::string>;

struct Launch {
    long long call = 0;
    long long known = 0;
    long long after = 0;
};

[[noreturn]] void giveUp(const std::string& why) {
    std::fprintf(stderr, "spawn: %s\n", why.c_str());
    std::exit(1);
}

std::vector<Launch> launches(long count, const Words& words, const std::string& stamp) {
    const valdorn::ChildCommand command{
        words[0], {words.begin() + 1, words.end()}, "/", {"PATH=/usr/bin:/bin"}};
    volatile long long& left = *openStamp(stamp.c_str());
    valdorn::PosixChildLauncher launcher;
    std::vector<Launch> done;
    while (std::ssize(done) < count) {
        left = 0;
        long long known = 0;
        valdorn::ChildExit end;
        std::binary_semaphore ended{0};
        const long long begin = nanoseconds();
        const auto child =
            launcher.launch(command, {[](std::string_view, const valdorn::OutputCredit&) {},
                                      [&known, &end, &ended](valdorn::ChildExit exit) {
                                          known = nanoseconds();
                                          end = exit;
                                          ended.release();
                                      }});
        const long long launched = nanoseconds();
        if (!child)
            giveUp(words[0] + " cannot be launched");
        ended.acquire();
        if (end != valdorn::ChildExit{valdorn::ChildExit::Kind::exited, 0})
            giveUp(words[0] + " has failed");
        done.push_back({launched - begin, known - begin, left ? known - left : 0});
        rest();
    }
    return done;
}

int printEach(const Words& words) {
    grow(std::atol(words[1].c_str()));
    const long count = std::atol(words[0].c_str());
    for (const Launch& launch : launches(count, {words.begin() + 3, words.end()}, words[2]))
        std::printf("%lld %lld %lld\n", launch.call, launch.known, launch.after);
    return 0;
}

void printMedian(const char* what, std::vector<Launch> all, long long Launch::*figure) {
    const auto middle = all.begin() + std::ssize(all) / 2;
    std::nth_element(all.begin(), middle, all.end(),
                     [figure](const Launch& a, const Launch& b) { return a.*figure < b.*figure; });
    std::printf("%s %.1f us\n", what, static_cast<double>((*middle).*figure) / 1e3);
}

int usage() {
    std::fprintf(stderr,
                 "usage: spawn [--each] COUNT [MEBIBYTES STAMP] PATH-OF-A-COMMAND [ARGUMENT...]\n");
    return 2;
}

int printMedians(const Words& words) {
    namespace fs = std::filesystem;
    const long count = std::atol(words[0].c_str());
    if (count <= 0)
        return usage();
    const fs::path noting = fs::read_symlink("/proc/self/exe").parent_path() / "launched_child";
    const fs::path stamp = fs::temp_directory_path() / ("spawn-" + std::to_string(getpid()));
    const auto commands = launches(count, {words.begin() + 1, words.end()}, stamp);
    printMedian("launch call", commands, &Launch::call);
    printMedian("until exit known", commands, &Launch::known);
    printMedian("exit to known", launches(count, {noting, "stamp", stamp}, stamp), &Launch::after);
    fs::remove(stamp);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    Words words(arguments + 1, arguments + count);
    if (words.size() >= 5 && words[0] == "--each")
        return printEach({words.begin() + 1, words.end()});
    if (words.size() >= 2 && words[0] != "--each")
        return printMedians(words);
    return usage();
}
