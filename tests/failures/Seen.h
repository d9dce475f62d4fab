#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

// What the tests see of this process, its children and their files, past the product: none of it
// counts as a call of the product's.
namespace valdorn::seen {

// How many descriptors and threads this process has.
std::size_t descriptors();
std::size_t threads();

// False when it never was a child of ours, or has been waited for.
bool isChild(pid_t pid);
bool isRunningChild(pid_t pid);
bool hasAnyChild();

// Waits for the child's end. Its exit code, or minus the signal that ended it.
int waitFor(pid_t pid);

// Ends whatever child is left, by id, among those; and waits for all children. How many were left.
std::size_t endAll(const std::vector<pid_t>& pids);

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
