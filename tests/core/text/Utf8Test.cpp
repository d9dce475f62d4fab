#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "text/Utf8.h"

namespace valdorn {
namespace {

// How many replacement characters stand for the bytes, wherever they stand in a line; -1 when
// something else is wrong.
int replacementsOf(const std::string& bytes) {
    std::string replaced;
    for (int count = 0; count < 9; ++count, replaced += "\xEF\xBF\xBD") {
        int places = 0;
        for (const std::string before : {"", "A", "1234567", "12345678", "\xC3\xA9", "\xFF"}) {
            for (const std::string after : {"", "A", "12345678", "\xE2\x82\xAC"}) {
                std::string expected = before == "\xFF" ? "\xEF\xBF\xBD" : before;
                expected += replaced;
                expected += after;
                places += decodedUtf8(before + bytes + after) == expected ? 1 : 0;
            }
        }
        if (places == 6 * 4)
            return count;
    }
    return -1;
}

TEST(Utf8Test, TextPassesUnchanged) {
    for (const std::string text : {"",
                                   "plain ascii, longer than a word",
                                   "\x01\x7F",
                                   "\xC2\x80",
                                   "\xC2\x80\x7F",
                                   "\xDF\xBF",
                                   "\xE0\xA0\x80",
                                   "\xE0\xBF\xBF",
                                   "\xE1\x80\x80",
                                   "\xEC\xBF\xBF",
                                   "\xED\x80\x80",
                                   "\xED\x9F\xBF",
                                   "\xEE\x80\x80",
                                   "\xEF\xBF\xBF",
                                   "\xEF\xBF\xBD",
                                   "\xF0\x90\x80\x80",
                                   "\xF0\xBF\xBF\xBF",
                                   "\xF1\x80\x80\x80",
                                   "\xF3\xBF\xBF\xBF",
                                   "\xF4\x80\x80\x80",
                                   "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(isWellFormedUtf8(text));
        EXPECT_EQ(decodedUtf8(text), text);
        EXPECT_EQ(decodedUtf8(text + "1234567" + text), text + "1234567" + text);
    }
    EXPECT_EQ(decodedUtf8(std::string(9, '\0')), std::string(9, '\0'));
}

TEST(Utf8Test, AFlawIsFoundWhereverItStands) {
    for (std::size_t before = 0; before < 140; ++before) {
        for (const std::string start : {"", "\xC3\xA9"}) {
            for (const std::size_t after : {0U, 1U, 63U, 64U, 200U}) {
                const std::string text = start + std::string(before, 'a');
                EXPECT_TRUE(isWellFormedUtf8(text + std::string(after, 'z')));
                EXPECT_FALSE(isWellFormedUtf8(text + "\xFF" + std::string(after, 'z')));
                EXPECT_FALSE(isWellFormedUtf8(text + "\xC3" + std::string(after, 'z')));
                EXPECT_EQ(decodedUtf8(text + "\xFF" + std::string(after, 'z')),
                          text + "\xEF\xBF\xBD" + std::string(after, 'z'));
            }
        }
    }
}

TEST(Utf8Test, NothingButWellFormedTextPasses) {
    for (const std::string flaw : {"\xFF", "\x80", "\xC3", "\xE2\x80", "\xF0\x9F\x90", "\xC0\xAF",
                                   "\xE0\x80\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(isWellFormedUtf8(flaw));
        EXPECT_FALSE(isWellFormedUtf8("1234567" + flaw));
        EXPECT_FALSE(isWellFormedUtf8("12345678" + flaw + "x"));
    }
}

TEST(Utf8Test, EachByteThatLeadsNothingIsReplaced) {
    for (const std::string byte : {"\x80", "\xBF", "\xC0", "\xC1", "\xF5", "\xFE", "\xFF"}) {
        EXPECT_EQ(replacementsOf(byte), 1);
        EXPECT_EQ(replacementsOf(byte + byte), 2);
    }
}

TEST(Utf8Test, ACutOffCharacterIsReplacedOnce) {
    for (const std::string part : {"\xC3", "\xE2", "\xE2\x82", "\xE0\xA0", "\xED\x9F", "\xF0",
                                   "\xF0\x9F", "\xF0\x9F\x90", "\xF4\x8F", "\xF4\x8F\xBF"})
        EXPECT_EQ(replacementsOf(part), 1) << part.size();
}

TEST(Utf8Test, OnlyTrailBytesGoOnWithACharacter) {
    for (const char* lead : {"\xC3", "\xE2\x82", "\xE0\xA0", "\xF0\x9F\x90", "\xF4\x8F\xBF"}) {
        for (const char* next : {"\x7F", "\xC0"})
            EXPECT_FALSE(isWellFormedUtf8(std::string(lead) + next));
        for (const char* next : {"\x80", "\xBF"})
            EXPECT_TRUE(isWellFormedUtf8(std::string(lead) + next));
    }
}

TEST(Utf8Test, WhatStandsBehindTheBytesIsNoPartOfThem) {
    for (const std::string_view whole : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x90\xA6"}) {
        const std::string_view part = whole.substr(0, whole.size() - 1);
        EXPECT_FALSE(isWellFormedUtf8(part));
        EXPECT_EQ(decodedUtf8(part), "\xEF\xBF\xBD");
    }
}

TEST(Utf8Test, OverlongFormsAreReplacedByteByByte) {
    EXPECT_EQ(replacementsOf("\xC0\xAF"), 2);
    EXPECT_EQ(replacementsOf("\xC1\xBF"), 2);
    EXPECT_EQ(replacementsOf("\xE0\x80\xAF"), 3);
    EXPECT_EQ(replacementsOf("\xE0\x9F\xBF"), 3);
    EXPECT_EQ(replacementsOf("\xF0\x80\x80"), 3);
    EXPECT_EQ(replacementsOf("\xF0\x80\x80\xAF"), 4);
    EXPECT_EQ(replacementsOf("\xF0\x8F\xBF\xBF"), 4);
}

TEST(Utf8Test, SurrogatesAndWhatIsAboveUnicodeAreReplacedByteByByte) {
    EXPECT_EQ(replacementsOf("\xED\xA0\x80"), 3);
    EXPECT_EQ(replacementsOf("\xED\xBF\xBF"), 3);
    EXPECT_EQ(replacementsOf("\xF4\x90\x80\x80"), 4);
    EXPECT_EQ(replacementsOf("\xF5\x80\x80\x80"), 4);
}

TEST(Utf8Test, EveryFlawOfALineIsReplacedByItself) {
    EXPECT_EQ(decodedUtf8("a\xF1\x80\x80\xE1\x80\xC2"
                          "b\x80"
                          "c\x80\xBF"
                          "d"),
              "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
              "b\xEF\xBF\xBD"
              "c\xEF\xBF\xBD\xEF\xBF\xBD"
              "d");
}

}  // namespace
}  // namespace valdorn
