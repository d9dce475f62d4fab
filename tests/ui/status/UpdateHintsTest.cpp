#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/status/UpdateHints.h"

namespace valdorn {
namespace {

class UpdateHintsTest : public testing::Test {
protected:
    std::string of(const std::string& version) { return hints.of(version)->text; }

    UpdateHints hints;
};

TEST_F(UpdateHintsTest, NeedsBothVersions) {
    EXPECT_FALSE(hints.of("v1"));
    hints.setLatest("v2");
    EXPECT_FALSE(hints.of(std::nullopt));
    EXPECT_TRUE(hints.of("v1"));
    hints.setLatest(std::nullopt);
    EXPECT_FALSE(hints.of("v1"));
}

TEST_F(UpdateHintsTest, EachVersionHasItsOwn) {
    hints.setLatest("v2");
    EXPECT_EQ(of("v1"), "update: v2 available");
    EXPECT_EQ(of("v2"), "runner is up to date");
    EXPECT_EQ(of("v1"), "update: v2 available");
}

TEST_F(UpdateHintsTest, NewReleaseIsComparedAnew) {
    hints.setLatest("v2");
    EXPECT_EQ(of("v2"), "runner is up to date");
    hints.setLatest("v3");
    EXPECT_EQ(of("v2"), "update: v3 available");
}

TEST_F(UpdateHintsTest, LooksAtATagOfAnyLengthOnceForAVersion) {
    const std::string tag = std::string(900'000, 'x') + "2";
    hints.setLatest(tag);
    const char* const text = hints.of("v1")->text.data();
    hints.setLatest(tag);
    EXPECT_EQ(hints.of("v1")->text.data(), text);
}

TEST_F(UpdateHintsTest, ForgetsVersionsThatAreTooManyForAFleet) {
    hints.setLatest("v200");
    const auto hintsOfAFleet = [this] {
        std::vector<const void*> found;
        for (int version = 0; version < 32; ++version)
            found.push_back(hints.of("v" + std::to_string(version)));
        return found;
    };
    const auto before = hintsOfAFleet();
    EXPECT_EQ(hintsOfAFleet(), before);
    EXPECT_EQ(of("v201"), "runner is up to date");
    EXPECT_NE(hintsOfAFleet(), before);
    EXPECT_EQ(of("v0"), "update: v200 available");
}

}  // namespace
}  // namespace valdorn
