#include <algorithm>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "simulation/Schedule.h"
#include "simulation/Stage.h"

namespace valdorn::simulation {
namespace {

bool areEqual(const Schedule& one, const Schedule& other) {
    const auto isSame = [](const Step& step, const Step& same) {
        return step.kind == same.kind && step.salt == same.salt;
    };
    return one.setUp == other.setUp && std::equal(one.steps.begin(), one.steps.end(),
                                                  other.steps.begin(), other.steps.end(), isSame);
}

TEST(ScheduleTest, OneSeedOfOneCampaignIsOneSchedule) {
    const Campaign& campaign = campaigns().front();
    EXPECT_TRUE(areEqual(draw(campaign, 7), draw(campaign, 7)));
    EXPECT_FALSE(areEqual(draw(campaign, 7), draw(campaign, 8)));
    EXPECT_FALSE(areEqual(draw(campaign, 7), draw(campaigns().back(), 7)));
}

TEST(ScheduleTest, StepsAreDrawnByWeight) {
    const Campaign outside{"Outside", {0, 0, 0, 0, 0, 0, 0, 1, 0}, 50};
    for (const Step& step : draw(outside, 3).steps)
        EXPECT_EQ(stepKinds().at(step.kind).field, Field::outside);
}

TEST(ScheduleTest, ShrinkingLeavesTheStepsThatAreNeeded) {
    Schedule schedule;
    for (std::uint64_t salt = 0; salt < 40; ++salt)
        schedule.steps.push_back({0, salt});
    const auto has = [](const Schedule& given, std::uint64_t salt) {
        return std::any_of(given.steps.begin(), given.steps.end(),
                           [salt](const Step& step) { return step.salt == salt; });
    };
    const Schedule least = shrunk(
        schedule, [&](const Schedule& shorter) { return has(shorter, 7) && has(shorter, 30); });
    ASSERT_EQ(least.steps.size(), 2U);
    EXPECT_EQ(least.steps.front().salt, 7U);
    EXPECT_EQ(least.steps.back().salt, 30U);
}

TEST(TellingTest, TextForPeopleIsPrintableAndShort) {
    EXPECT_EQ(shown("a\r\n\xFF"), "\"a\\x0D\\x0A\\xFF\"");
    EXPECT_LT(shown(std::string(10000, 'x')).size(), 200U);
}

}  // namespace
}  // namespace valdorn::simulation
