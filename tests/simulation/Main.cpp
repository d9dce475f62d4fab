#include <algorithm>
#include <cstdio>
#include <string_view>

#include <gtest/gtest.h>

#include "simulation/CrashNote.h"
#include "simulation/Soak.h"

namespace {

constexpr char usage[] =
    R"(The core beside a model of its rules, in random situations that a seed decides.

  simulation_tests                    the campaigns of the everyday test run
  simulation_tests --soak=COUNT [--seed=N] [--threads=N]
                                      COUNT schedules of all campaigns by turns, from seed N on;
                                      fails also when a marked situation never arises

A failure tells its campaign and its seed. To replay it:
  VALDORN_SIMULATION_SEED=N simulation_tests --gtest_filter='*/CAMPAIGN'
VALDORN_SIMULATION_COUNT=N plays N schedules from there on, or from seed 1 on.

)";

}  // namespace

int main(int argc, char** argv) {
    const bool asksForHelp = std::any_of(argv, argv + argc, [](const char* argument) {
        return std::string_view(argument) == "--help";
    });
    if (asksForHelp)
        std::fputs(usage, stdout);
    valdorn::simulation::CrashNote::install();
    if (const auto plan = valdorn::simulation::soakPlan(argc, argv))
        return valdorn::simulation::soak(*plan) ? 0 : 1;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
