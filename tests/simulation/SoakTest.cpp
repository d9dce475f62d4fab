#include <gtest/gtest.h>

#include "simulation/Soak.h"

namespace valdorn::simulation {
namespace {

TEST(SoakTest, TakesWhatIsAskedFor) {
    const auto plan = soakPlan({"simulation_tests", "--soak=50", "--seed=7", "--threads=3"});
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->schedules, 50U);
    EXPECT_EQ(plan->firstSeed, 7U);
    EXPECT_EQ(plan->threads, 3U);
}

TEST(SoakTest, RefusesWhatItDoesNotUnderstandAndWhatWouldPlayNothing) {
    EXPECT_TRUE(soakPlan({"simulation_tests", "--soak=1"}));
    for (const char* argument : {"--soak=", "--soak=x", "--soak=5x", "--soak=-1", "--soak= 5",
                                 "--soak=0", "--soak", "--soak=99999999999999999999", "--threads=0",
                                 "--threads=4294967297", "--seed=x", "--sede=5", "x"})
        EXPECT_FALSE(soakPlan({"simulation_tests", "--soak=1", argument})) << argument;
    EXPECT_FALSE(soakPlan({"simulation_tests", "--seed=1"}));
}

TEST(SoakTest, IsAskedForByAnyOfItsArguments) {
    for (const char* argument : {"--soak=1", "--soak", "--seed=1", "--threads=2"})
        EXPECT_TRUE(asksForSoak({"simulation_tests", argument})) << argument;
    EXPECT_FALSE(asksForSoak({"simulation_tests", "--gtest_filter=*"}));
}

}  // namespace
}  // namespace valdorn::simulation
