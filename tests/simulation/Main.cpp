#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/CrashNote.h"
#include "simulation/Soak.h"

namespace {

constexpr char usage[] =
    R"(The core beside a model of its rules, in random situations that a seed decides.

  simulation_tests                    the campaigns of the everyday test run
  simulation_tests --soak=COUNT [--seed=N] [--threads=N]
                                      COUNT schedules of all campaigns by turns, from seed N on;
                                      fails also when a marked situation never arises in 250000

A failure tells its campaign and its seed. To replay it:
  VALDORN_SIMULATION_SEED=N simulation_tests --gtest_filter='*/CAMPAIGN'
VALDORN_SIMULATION_COUNT=N plays N schedules from there on, or from seed 1 on.

)";

int soak(const std::vector<std::string_view>& arguments) {
    const auto plan = valdorn::simulation::soakPlan(arguments);
    if (plan)
        return valdorn::simulation::soak(*plan) ? 0 : 1;
    std::fputs(usage, stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv, argv + argc);
    const bool asksForHelp =
        std::find(arguments.begin(), arguments.end(), "--help") != arguments.end();
    if (asksForHelp)
        std::fputs(usage, stdout);
    valdorn::simulation::CrashNote::install();
    if (valdorn::simulation::asksForSoak(arguments))
        return soak(arguments);
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1 && !asksForHelp) {
        std::fputs(usage, stderr);
        return 2;
    }
    const int status = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() > 0)
        return status;
    std::fputs("There is no test of that name.\n", stderr);
    return 2;
}
