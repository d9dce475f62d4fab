#include <string>

#include <gtest/gtest.h>

#include "text/Ascii.h"

namespace valdorn {
namespace {

TEST(AsciiTest, ATextOfAsciiIsItsOwnPrefix) {
    for (std::size_t size = 0; size < 200; ++size) {
        EXPECT_EQ(asciiPrefix(std::string(size, '\0')), size);
        EXPECT_EQ(asciiPrefix(std::string(size, '\x7F')), size);
    }
}

TEST(AsciiTest, ThePrefixEndsAtTheFirstByteThatIsNone) {
    for (std::size_t before = 0; before < 140; ++before) {
        for (const std::size_t after : {0U, 1U, 7U, 8U, 63U, 64U, 200U}) {
            for (const char byte : {'\x80', '\xFF'}) {
                const std::string text =
                    std::string(before, 'a') + byte + std::string(after, 'z') + byte;
                EXPECT_EQ(asciiPrefix(text), before) << after;
            }
        }
    }
}

TEST(AsciiTest, OnlyItsOwnCapitalsBecomeSmall) {
    EXPECT_EQ(asciiLowerCased("@AZ[`az{ KDE\xC3\x89"), "@az[`az{ kde\xC3\x89");
    EXPECT_EQ(asciiLowerCased(""), "");
}

}  // namespace
}  // namespace valdorn
