#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <string>
#include <system_error>

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

// A word that is no number would play something, and look as if that had been asked for.
std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    if (text == nullptr)
        return otherwise;
    const char* const end = text + std::strlen(text);
    std::uint64_t number = 0;
    const auto read = std::from_chars(text, end, number);
    if (read.ec != std::errc() || read.ptr != end)
        throw std::invalid_argument(std::string(variable) + " is no number");
    return number;
}

class CampaignTest : public testing::TestWithParam<Campaign> {};

TEST_P(CampaignTest, AgreesWithTheModel) {
    const bool isReplay = std::getenv("VALDORN_SIMULATION_SEED") != nullptr;
    const std::uint64_t first = numberFrom("VALDORN_SIMULATION_SEED", 1);
    const std::uint64_t count =
        numberFrom("VALDORN_SIMULATION_COUNT", isReplay ? 1 : schedulesOfEach);
    ASSERT_GT(count, 0U);
    for (std::uint64_t played = 0; played < count; ++played) {
        const std::uint64_t seed = first + played;
        CrashNote::playing(GetParam(), seed);
        ASSERT_FALSE(play(draw(GetParam(), seed))) << report(GetParam(), seed);
    }
}

INSTANTIATE_TEST_SUITE_P(Simulation, CampaignTest, testing::ValuesIn(campaigns()),
                         [](const auto& campaign) { return std::string(campaign.param.name); });

}  // namespace
}  // namespace valdorn::simulation
