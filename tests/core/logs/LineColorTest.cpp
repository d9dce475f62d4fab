#include <gtest/gtest.h>

#include "logs/LevelFilter.h"
#include "logs/LineColor.h"

namespace valdorn {
namespace {

TEST(LineColorTest, ErrorsAreRed) {
    EXPECT_EQ(lineColor("time=x level=error msg=y"), SystemColor::red);
    EXPECT_EQ(lineColor("Error: no such host"), SystemColor::red);
    EXPECT_EQ(lineColor("Error:"), SystemColor::red);
}

TEST(LineColorTest, AnErrorLineIsRedAndYetNotOfThatLevel) {
    EXPECT_EQ(lineColor("Error: no such host"), SystemColor::red);
    EXPECT_FALSE(passes(LevelFilter::error, "Error: no such host"));
}

TEST(LineColorTest, ErrorCountsInThatFormOnlyAtTheStart) {
    EXPECT_EQ(lineColor("  Error: no such host"), std::nullopt);
    EXPECT_EQ(lineColor("Error no such host"), std::nullopt);
    EXPECT_EQ(lineColor(""), std::nullopt);
}

TEST(LineColorTest, WarningsAreOrangeWhateverStandsBeforeThem) {
    EXPECT_EQ(lineColor("level=warning"), SystemColor::orange);
    EXPECT_EQ(lineColor("level=info msg=\"saw level=warning\""), SystemColor::orange);
}

TEST(LineColorTest, AnErrorOutdoesAWarning) {
    EXPECT_EQ(lineColor("level=warning msg=\"saw level=error\""), SystemColor::red);
    EXPECT_EQ(lineColor("Error: level=warning"), SystemColor::red);
}

TEST(LineColorTest, OtherLinesHaveNoColorOfTheirOwn) {
    EXPECT_EQ(lineColor("level=info msg=x"), std::nullopt);
    EXPECT_EQ(lineColor("level=Error"), std::nullopt);
    EXPECT_EQ(lineColor("level=WARNING"), std::nullopt);
    EXPECT_EQ(lineColor("error: x"), std::nullopt);
    EXPECT_EQ(lineColor("ERROR: x"), std::nullopt);
}

}  // namespace
}  // namespace valdorn
