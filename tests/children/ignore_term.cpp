// Says "ready" and lives on through polite signals.
#include <csignal>

#include "ChildTools.h"

int main() {
    std::signal(SIGTERM, [](int) { children::print("asked\n"); });
    children::print("ready\n");
    children::waitForEver();
}
