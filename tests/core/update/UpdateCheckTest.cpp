#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "update/UpdateCheck.h"

namespace valdorn {
namespace {

using Numbers = std::vector<std::int64_t>;
using UpdateCheck::components;
using UpdateCheck::isNewer;

void expectEach(const std::vector<std::pair<std::string, Numbers>>& rows) {
    for (const auto& [version, numbers] : rows)
        EXPECT_EQ(components(version), numbers) << version;
}

TEST(UpdateCheckTest, TakesTheNumbersOfAnOrdinaryTag) {
    expectEach({{"v0.2.11", {0, 2, 11}}, {"1.2.3", {1, 2, 3}}, {"7", {7}}});
}

TEST(UpdateCheckTest, SkipsEverySmallVAtTheStartAndNoOther) {
    expectEach({{"vv1.2", {1, 2}}, {"V1.2", {}}, {"vV1", {}}, {"1v2", {1}}, {"v v1", {}}});
}

TEST(UpdateCheckTest, TheNumbersEndAtTheFirstOtherCharacter) {
    expectEach({{"1.2.3-rc1", {1, 2, 3}},
                {"1.2 beta", {1, 2}},
                {"1.2.x", {1, 2}},
                {"1.2\n.3", {1, 2}},
                {"1+2", {1}},
                {"1,5", {1}},
                {std::string("1\0.2", 4), {1}}});
}

TEST(UpdateCheckTest, NothingComesOfATextWithoutNumbers) {
    expectEach({{"", {}}, {"v", {}}, {"vvv", {}}, {"-1", {}}, {"+1", {}}, {" 1", {}}, {"x1", {}}});
    EXPECT_EQ(components(std::string_view()), Numbers{});
}

TEST(UpdateCheckTest, EmptyPiecesBetweenDotsAreDropped) {
    expectEach({{"1..2", {1, 2}}, {".5.", {5}}, {"...", {}}, {"v.", {}}, {"v.1", {1}}});
}

TEST(UpdateCheckTest, ANumberOver64BitsIsZero) {
    expectEach({{"99999999999999999999.1", {0, 1}},
                {"9223372036854775807", {INT64_MAX}},
                {"9223372036854775808", {0}},
                {"18446744073709551616.2", {0, 2}},
                {"000000000000000000000000000000012.3", {12, 3}}});
}

TEST(UpdateCheckTest, ANumeralOfAnotherScriptBelongsToTheNumbersAndIsZero) {
    for (const char* const numeral :
         {"٣", "३", "３", "²", "½", "Ⅳ", "④", "一", "萬", "〇", "兆", "𐄇", "𝟗", "㊉"}) {
        const std::string text = numeral;
        expectEach({{"v" + text + ".5", {0, 5}}, {"1" + text + ".5", {0, 5}}, {text, {0}}});
    }
    // Look like numbers and have no value.
    expectEach({{"1.l", {1}}, {"1.人", {1}}, {"1.٪", {1}}, {"1。2", {1}}, {"1٫2", {1}}});
}

TEST(UpdateCheckTest, AMarkMakesAnotherCharacterOfADotOrAV) {
    const std::string mark = "\u0308";
    const std::string joiner = "\u200d";
    expectEach({{"1." + mark + "2", {1}},
                {"1." + joiner + "2", {1}},
                {"v" + mark + "1", {}},
                {"vv" + mark + "1", {}},
                {"." + mark + "1", {}}});
}

TEST(UpdateCheckTest, ADigitWithAMarkIsStillNumericAndIsZero) {
    expectEach({{"1\u0308.2", {0, 2}},
                {"1\ufe0f\u20e3.2", {0, 2}},  // the key with the digit one
                {"12\u0308.2", {0, 2}},
                {"1\u0308\u0308-2", {0}}});
}

TEST(UpdateCheckTest, AMarkBeforeADotOrADigitTakesItIn) {
    const std::string arabicNumberSign = "\u0600";
    expectEach({{"1" + arabicNumberSign + ".2", {1}}, {arabicNumberSign + "1.2", {}}});
}

TEST(UpdateCheckTest, IllFormedBytesEndTheNumbers) {
    expectEach({{"1.2\xff.3", {1, 2}},
                {"\xff", {}},
                {"1\xe4\xb8", {1}},            // 一 cut off
                {"1\xc0\xae.2", {1}},          // an overlong dot
                {"1\xed\xa0\x80.2", {1}},      // a surrogate
                {"1\xf4\x90\x80\x80.2", {1}},  // over the last code point
                {"v\x80"
                 "1",
                 {}}});
}

TEST(UpdateCheckTest, LongTextsAreTakenWhole) {
    const std::size_t many = 200'000;
    std::string dotted;
    for (std::size_t index = 0; index < many; ++index)
        dotted += "1.";
    EXPECT_EQ(components(dotted), Numbers(many, 1));
    EXPECT_EQ(components(std::string(many, 'v') + "3"), Numbers{3});
    EXPECT_EQ(components(std::string(many, '9')), Numbers{0});
    std::string marks = "1";
    for (std::size_t index = 0; index < many; ++index)
        marks += "\u0308";
    EXPECT_EQ(components(marks + ".2"), (Numbers{0, 2}));
}

TEST(UpdateCheckTest, MoreThanTwoGigabytesAreNoDanger) {
    // Pages that are only read cost nothing.
    const std::size_t size = std::size_t{3} * 1024 * 1024 * 1024;
    void* const zeros =
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(zeros, MAP_FAILED);
    EXPECT_EQ(components({static_cast<const char*>(zeros), size}), Numbers{});
    munmap(zeros, size);
}

TEST(UpdateCheckTest, NewerIsGreaterAtTheFirstNumberThatDiffers) {
    EXPECT_TRUE(isNewer("v1.10.0", "1.9.9"));
    EXPECT_FALSE(isNewer("1.9.9", "v1.10.0"));
    EXPECT_TRUE(isNewer("1.10", "1.9"));
    EXPECT_FALSE(isNewer("1.2", "1.2.1"));
    EXPECT_TRUE(isNewer("1.2.0.1", "1.2"));
    EXPECT_TRUE(isNewer("2.0", "1.9.9.9"));
    EXPECT_FALSE(isNewer("1.9.9.9", "2.0"));
    EXPECT_TRUE(isNewer("1", ""));
    EXPECT_FALSE(isNewer("", "1"));
}

TEST(UpdateCheckTest, NumbersThatAreNotThereCountAsZero) {
    EXPECT_FALSE(isNewer("1.2", "1.2.0"));
    EXPECT_FALSE(isNewer("1.2.0", "1.2"));
    EXPECT_FALSE(isNewer("", ""));
    EXPECT_FALSE(isNewer("", "0.0"));
    EXPECT_FALSE(isNewer("0.0", ""));
}

TEST(UpdateCheckTest, WhatFollowsTheNumbersIsNotCompared) {
    EXPECT_FALSE(isNewer("v0.3.0-rc1", "0.3.0"));
    EXPECT_FALSE(isNewer("0.3.0", "v0.3.0-rc1"));
    EXPECT_FALSE(isNewer("dev", "v0.3.0"));
    EXPECT_TRUE(isNewer("v0.3.0", "dev"));
}

}  // namespace
}  // namespace valdorn
