#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

// What the tests see of this process, its children and their files, past the product: none of it
// counts as a call of the product's.
namespace valdorn::seen {

// A moment between two looks at the same thing.
void rest();

// For what comes by itself, but tells nobody: false when it does not come within that time.
template <typename Condition>
bool soon(const Condition& condition, std::chrono::seconds patience = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        rest();
    }
    return true;
}

// How many descriptors and threads this process has.
std::size_t descriptors();
std::size_t threads();

// False when it never was a child of ours, or has been waited for.
bool isChild(pid_t pid);
bool isRunningChild(pid_t pid);
bool hasAnyChild();

// The only way to send a signal here: to that child, and to nobody when it is none. An id of -1,
// which says that there is no daemon, means everybody to kill().
void signal(pid_t pid, int number);

// Waits for the child's end. Its exit code, or minus the signal that ended it.
int waitFor(pid_t pid);

// Waits for the end of all children, which come to it by themselves; false when one goes on.
bool waitForAll();

// Ends whatever child is left, and waits for it. How many were left.
std::size_t endAll();

// The lines of a file, or none. The last one may lack its line end.
std::string content(const std::string& path);
std::vector<std::string> lines(const std::string& path);

// The ids of the daemons that were ever launched in that folder, oldest first.
std::vector<pid_t> launches(const std::string& folder);

// The one that was launched last of those that run, or -1.
pid_t daemonIn(const std::string& folder);

// The names of all that stands in the folder and below it.
std::vector<std::string> namesBelow(const std::string& folder);

}  // namespace valdorn::seen
