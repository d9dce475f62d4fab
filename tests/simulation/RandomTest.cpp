#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/Random.h"

namespace valdorn::simulation {
namespace {

TEST(RandomTest, DrawsWhatTheGeneratorIsKnownToDraw) {
    Random random(1234567);
    const std::vector<std::uint64_t> known = {6457827717110365317U, 3203168211198807973U,
                                              9817491932198370423U, 4593380528125082431U,
                                              16408922859458223821U};
    for (const std::uint64_t number : known)
        EXPECT_EQ(random.next(), number);
}

TEST(RandomTest, StaysBelowTheBoundAndComesByEverythingBelowIt) {
    Random random(1);
    std::vector<int> seen(5);
    for (int draw = 0; draw < 200; ++draw)
        ++seen.at(random.below(5));
    for (const int times : seen)
        EXPECT_GT(times, 0);
}

TEST(RandomTest, ChancesOfNoneAndOfAllAreCertain) {
    Random random(1);
    for (int draw = 0; draw < 100; ++draw) {
        EXPECT_FALSE(random.chance(0));
        EXPECT_TRUE(random.chance(100));
    }
}

}  // namespace
}  // namespace valdorn::simulation
