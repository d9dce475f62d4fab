// Writes its signal mask and ignored signals as the kernel knows them, and its process group.
#include <fstream>
#include <string>

#include <unistd.h>

#include "ChildTools.h"

namespace {

// Signals 32 and 33 belong to the C library, which has them ignored in what it spawns and takes
// them back when it needs them; no program can name them.
constexpr unsigned long long librarysOwn = 3ull << 31;

void report(const std::string& title, const std::string& digits) {
    const auto signals = std::stoull(digits, nullptr, 16) & ~librarysOwn;
    children::print(title + ": " + std::to_string(signals) + "\n");
}

}  // namespace

int main() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:"))
            report("blocked", line.substr(8));
        if (line.starts_with("SigIgn:"))
            report("ignored", line.substr(8));
    }
    children::print(getpgrp() == getpid() ? "group of its own\n" : "group of another\n");
}
