#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "simulation/CrashNote.h"
#include "simulation/Schedule.h"

namespace valdorn::simulation {

// For the test's own output.
void PrintTo(const Campaign& campaign, std::ostream* stream);
void PrintTo(const Campaign& campaign, std::ostream* stream) {
    *stream << campaign.name;
}

namespace {

// As many as the everyday test run has time for; `./dev soak` takes a million.
constexpr std::uint64_t schedulesOfEach = 2500;

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

class CampaignTest : public testing::TestWithParam<Campaign> {};

TEST_P(CampaignTest, AgreesWithTheModel) {
    const bool isReplay = std::getenv("VALDORN_SIMULATION_SEED") != nullptr;
    const std::uint64_t first = numberFrom("VALDORN_SIMULATION_SEED", 1);
    const std::uint64_t count =
        numberFrom("VALDORN_SIMULATION_COUNT", isReplay ? 1 : schedulesOfEach);
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        CrashNote::playing(GetParam(), seed);
        ASSERT_FALSE(play(draw(GetParam(), seed))) << report(GetParam(), seed);
    }
}

INSTANTIATE_TEST_SUITE_P(Simulation, CampaignTest, testing::ValuesIn(campaigns()),
                         [](const auto& campaign) { return std::string(campaign.param.name); });

}  // namespace
}  // namespace valdorn::simulation
