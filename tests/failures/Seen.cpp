#include "failures/Seen.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include "failures/calls/FailingCalls.h"
#include "support/OpenDescriptors.h"

namespace valdorn::seen {

namespace {

std::vector<pid_t> children() {
    const failing::Quiet quiet;
    std::vector<pid_t> pids;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream listed(thread.path() / "children");
        pids.insert(pids.end(), std::istream_iterator<pid_t>(listed), {});
    }
    return pids;
}

// How many of our children had ended.
std::size_t waitForEnded() {
    const failing::Quiet quiet;
    std::size_t count = 0;
    siginfo_t info{};
    while (waitid(P_ALL, 0, &info, WEXITED | WNOHANG) == 0 && info.si_pid != 0) {
        info = {};
        ++count;
    }
    return count;
}

}  // namespace

void rest() {
    const failing::Quiet quiet;
    poll(nullptr, 0, 1);
}

std::size_t descriptors() {
    const failing::Quiet quiet;
    return openDescriptors();
}

std::size_t threads() {
    const failing::Quiet quiet;
    const std::filesystem::directory_iterator all("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

bool isChild(pid_t pid) {
    const failing::Quiet quiet;
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

bool isRunningChild(pid_t pid) {
    const failing::Quiet quiet;
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == 0;
}

bool hasAnyChild() {
    const failing::Quiet quiet;
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

void signal(pid_t pid, int number) {
    const failing::Quiet quiet;
    if (pid > 0 && isChild(pid))
        kill(pid, number);
}

int waitFor(pid_t pid) {
    const failing::Quiet quiet;
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED);
    return info.si_code == CLD_EXITED ? info.si_status : -info.si_status;
}

bool waitForAll() {
    return soon([] {
        waitForEnded();
        return !hasAnyChild();
    });
}

std::size_t endAll() {
    std::size_t left = 0;
    const bool haveEnded = soon([&left] {
        for (const pid_t pid : children())
            signal(pid, SIGKILL);
        left += waitForEnded();
        return !hasAnyChild();
    });
    return haveEnded ? left : left + 1;
}

std::string content(const std::string& path) {
    const failing::Quiet quiet;
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::vector<std::string> lines(const std::string& path) {
    std::istringstream text(content(path));
    std::vector<std::string> all;
    for (std::string line; std::getline(text, line);)
        all.push_back(line);
    return all;
}

std::vector<pid_t> launches(const std::string& folder) {
    std::vector<pid_t> pids;
    for (const std::string& line : lines(folder + "/launches"))
        pids.push_back(static_cast<pid_t>(std::stol(line)));
    return pids;
}

pid_t daemonIn(const std::string& folder) {
    const auto all = launches(folder);
    const auto last = std::find_if(all.rbegin(), all.rend(), isRunningChild);
    return last == all.rend() ? -1 : *last;
}

std::vector<std::string> namesBelow(const std::string& folder) {
    const failing::Quiet quiet;
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

}  // namespace valdorn::seen
