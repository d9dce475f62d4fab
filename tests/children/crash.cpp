// Complains in a structured line and crashes.
#include <csignal>

#include "ChildTools.h"

int main() {
    children::print("time=\"2026-11-21T08:00:00Z\" level=error msg=\"cannot go on\"\n");
    raise(SIGKILL);
}
