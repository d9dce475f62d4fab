#include <cstdlib>

#include <gtest/gtest.h>

#include "simulation/CrashNote.h"
#include "simulation/Schedule.h"

namespace valdorn::simulation {
namespace {

TEST(CrashNoteDeathTest, ACrashTellsWhatWasPlayed) {
    const auto crash = [] {
        CrashNote::playing(campaigns().front(), 4711);
        std::abort();
    };
    EXPECT_DEATH(crash(), "CRASHED in campaign Everything, seed 4711");
}

}  // namespace
}  // namespace valdorn::simulation
