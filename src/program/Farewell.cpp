#include "program/Farewell.h"

#include <QGuiApplication>
#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace valdorn {

namespace {

constexpr unsigned farewellSeconds = 1;

volatile std::sig_atomic_t statusOfProcess = EXIT_SUCCESS;

}  // namespace

void boundFarewell(int status) {
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return;
    statusOfProcess = status;
    std::signal(SIGALRM, [](int) { std::_Exit(statusOfProcess); });
    alarm(farewellSeconds);
}

}  // namespace valdorn
