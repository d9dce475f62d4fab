// Writes its signal mask and ignored signals as the kernel knows them, and its process group.
#include <fstream>
#include <string>

#include <unistd.h>

#include "ChildTools.h"

int main() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:") || line.starts_with("SigIgn:"))
            children::print(line + "\n");
    }
    children::print(getpgrp() == getpid() ? "group of its own\n" : "group of another\n");
}
