#include "program/Farewell.h"

#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace valdorn {

namespace {

constexpr unsigned farewellSeconds = 4;

volatile std::sig_atomic_t statusOfProcess = EXIT_SUCCESS;

}  // namespace

void boundFarewell(int status) {
    statusOfProcess = status;
    std::signal(SIGALRM, [](int) { std::_Exit(statusOfProcess); });
    alarm(farewellSeconds);
}

}  // namespace valdorn
