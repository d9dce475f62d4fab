#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LevelFilter.h"

namespace valdorn {
namespace {

TEST(LevelFilterTest, IsChosenFromFourTitlesInThisOrder) {
    std::vector<std::string> titles;
    for (const LevelFilter filter : levelFilters)
        titles.emplace_back(rawValue(filter));
    EXPECT_EQ(titles, (std::vector<std::string>{"All", "Info", "Warning", "Error"}));
}

TEST(LevelFilterTest, AllTakesEveryLine) {
    for (const std::string line : {"", "job", "level=error", "level=debug"})
        EXPECT_TRUE(passes(LevelFilter::all, line)) << line;
}

TEST(LevelFilterTest, TakesLinesThatStateTheLevelAnywhere) {
    EXPECT_TRUE(passes(LevelFilter::info, "time=\"x\" level=info msg=y"));
    EXPECT_TRUE(passes(LevelFilter::warning, "level=warning"));
    EXPECT_TRUE(passes(LevelFilter::error, "msg: loglevel=errors"));
    EXPECT_FALSE(passes(LevelFilter::info, "level=warning"));
    EXPECT_FALSE(passes(LevelFilter::warning, "level=error"));
    EXPECT_FALSE(passes(LevelFilter::error, "level=info"));
    EXPECT_FALSE(passes(LevelFilter::error, ""));
}

TEST(LevelFilterTest, CaseCounts) {
    EXPECT_FALSE(passes(LevelFilter::warning, "level=Warning"));
    EXPECT_FALSE(passes(LevelFilter::info, "LEVEL=info"));
    EXPECT_FALSE(passes(LevelFilter::error, "level=ERROR"));
}

TEST(LevelFilterTest, KnowsNoOtherFormOfALevel) {
    EXPECT_FALSE(passes(LevelFilter::error, "Error: no such host"));
    EXPECT_FALSE(passes(LevelFilter::error, "level = error"));
    EXPECT_FALSE(passes(LevelFilter::error, "level=erro"));
    EXPECT_FALSE(passes(LevelFilter::warning, "level=warnin"));
    EXPECT_FALSE(passes(LevelFilter::info, "level=inf"));
    EXPECT_FALSE(passes(LevelFilter::info, "evel=info"));
    EXPECT_FALSE(passes(LevelFilter::warning, "evel=warning"));
    EXPECT_FALSE(passes(LevelFilter::error, "evel=error"));
}

TEST(LevelFilterTest, ALineWithTwoLevelsPassesBoth) {
    const std::string line = "level=info msg=\"saw level=warning\"";
    EXPECT_TRUE(passes(LevelFilter::info, line));
    EXPECT_TRUE(passes(LevelFilter::warning, line));
    EXPECT_FALSE(passes(LevelFilter::error, line));
}

}  // namespace
}  // namespace valdorn
