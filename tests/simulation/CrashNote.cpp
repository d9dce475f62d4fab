#include "simulation/CrashNote.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <tuple>

#include <unistd.h>

#include "simulation/Schedule.h"

namespace valdorn::simulation {

namespace {

constexpr std::array crashes = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// Written beforehand, as next to nothing may be done once it has happened.
struct Note {
    std::array<char, 120> text;
    std::size_t size;
};
thread_local Note note{};

std::array<struct sigaction, NSIG> before{};

// An instruction that crashed does so again after the return; an abort has to be made anew.
void onCrash(int signal) {
    std::ignore = write(STDERR_FILENO, note.text.data(), note.size);
    sigaction(signal, &before.at(static_cast<std::size_t>(signal)), nullptr);
    if (signal == SIGABRT)
        raise(signal);
}

}  // namespace

void CrashNote::install() {
    struct sigaction action = {};
    action.sa_handler = onCrash;
    for (const int signal : crashes)
        sigaction(signal, &action, &before.at(static_cast<std::size_t>(signal)));
}

void CrashNote::playing(const Campaign& campaign, std::uint64_t seed) {
    const int size =
        std::snprintf(note.text.data(), note.text.size(), "CRASHED in campaign %s, seed %llu\n",
                      campaign.name, static_cast<unsigned long long>(seed));
    note.size = static_cast<std::size_t>(size);
}

}  // namespace valdorn::simulation
