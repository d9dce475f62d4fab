#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerStatus.h"

namespace valdorn {
namespace {

const std::vector<std::pair<RunnerStatus, std::string>> titles = {
    {RunnerStatus::notRegistered, "Not registered"},
    {RunnerStatus::stopped, "Stopped"},
    {RunnerStatus::starting, "Starting\xE2\x80\xA6"},
    {RunnerStatus::noNetwork, "No local-network access"},
    {RunnerStatus::connected, "Connected \xE2\x80\x94 idle"},
    {RunnerStatus::building, "Building a job"},
};

TEST(RunnerStatus, HasItsTitleAsRawValue) {
    for (const auto& [status, title] : titles)
        EXPECT_EQ(rawValue(status), title);
}

TEST(RunnerStatus, ComesBackFromItsRawValue) {
    for (const auto& [status, title] : titles)
        EXPECT_EQ(runnerStatus(title), status);
}

TEST(RunnerStatus, ComesFromNoOtherText) {
    for (const char* text : {"", "Starting...", "starting\xE2\x80\xA6", "STOPPED", "Stopped ",
                             "Connected - idle", "connected", "0"}) {
        EXPECT_EQ(runnerStatus(text), std::nullopt) << text;
    }
}

TEST(RunnerStatus, StandsInDeclarationOrder) {
    for (std::size_t index = 0; index < titles.size(); ++index) {
        EXPECT_EQ(static_cast<std::size_t>(titles[index].first), index);
    }
}

TEST(RunnerStatus, HashesLikeItsRawValue) {
    for (const auto& [status, title] : titles) {
        EXPECT_EQ(std::hash<RunnerStatus>{}(status), std::hash<std::string_view>{}(title));
    }
}

}  // namespace
}  // namespace valdorn
