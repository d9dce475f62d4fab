#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "update/ReleaseTag.h"

namespace valdorn {
namespace {

using Tag = std::optional<std::string>;

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    for (std::size_t index = 0; index < count; ++index)
        all += text;
    return all;
}

TEST(ReleaseTagTest, TakesTheTagAmongOtherFields) {
    EXPECT_EQ(releaseTag(R"({"id": 7, "tag_name": "v0.2.11", "name": "A release",
                             "draft": false, "author": {"id": 1}, "assets": [{"size": 1.5}],
                             "published_at": null})"),
              "v0.2.11");
}

TEST(ReleaseTagTest, TheTagIsTakenAsItIs) {
    EXPECT_EQ(releaseTag(R"({"tag_name": "  v1.2 \n"})"), "  v1.2 \n");
    EXPECT_EQ(releaseTag(R"({"tag_name": ""})"), "");
    EXPECT_EQ(releaseTag(R"({"tag_name": "\u00fc\ud83d\udc26/\/"})"), "ü🐦//");
    EXPECT_EQ(releaseTag(R"({"tag_name": "1\u00002"})"), std::string("1\0"
                                                                     "2",
                                                                     3));
    EXPECT_EQ(releaseTag(R"({"tag\u005fname": "v1"})"), "v1");
}

TEST(ReleaseTagTest, OnlyATextIsATag) {
    for (const char* const value :
         {"7", "-7", "0.2", "true", "false", "null", "[]", "{}", R"(["v1"])",
          R"({"tag_name": "v1"})", R"([{"tag_name": "v1"}])"})
        EXPECT_EQ(releaseTag(R"({"tag_name": )" + std::string(value) + "}"), std::nullopt) << value;
}

TEST(ReleaseTagTest, OnlyTheTopLevelCounts) {
    EXPECT_EQ(releaseTag(R"({"release": {"tag_name": "v1"}})"), std::nullopt);
    EXPECT_EQ(releaseTag(R"({"a": [{"tag_name": "v1"}], "b": "v2"})"), std::nullopt);
    EXPECT_EQ(releaseTag(R"({"a": {"tag_name": "v1"}, "tag_name": "v2", "c": {"tag_name": 3}})"),
              "v2");
    EXPECT_EQ(releaseTag(R"({"tag_name": {"x": 1}, "a": "v1"})"), std::nullopt);
    EXPECT_EQ(releaseTag(R"({"a": {"tag_name": 1, "b": "v1"}, "c": "v2"})"), std::nullopt);
}

TEST(ReleaseTagTest, OnlyAnObjectHasOne) {
    for (const char* const json :
         {R"([{"tag_name": "v1"}])", R"([{"tag_name": 1}, "v1"])", R"(["tag_name", "v1"])",
          R"("v1")", "7", "null", "true", "[]", "{}", R"({"Tag_Name": "v1"})"})
        EXPECT_EQ(releaseTag(json), std::nullopt) << json;
}

TEST(ReleaseTagTest, OfSeveralTheLastCounts) {
    EXPECT_EQ(releaseTag(R"({"tag_name": "v1", "tag_name": "v2"})"), "v2");
    EXPECT_EQ(releaseTag(R"({"tag_name": 1, "tag_name": "v2"})"), "v2");
    for (const char* const value : {"1", "-1", "1.5", "null", "true", "{}", "[]"})
        EXPECT_EQ(releaseTag(R"({"tag_name": "v1", "tag_name": )" + std::string(value) + "}"),
                  std::nullopt)
            << value;
}

TEST(ReleaseTagTest, WhatIsNoJsonHasNone) {
    for (const char* const text :
         {"", " ", "<html>500</html>", R"({"tag_name": "v1")", R"({"tag_name": "v1"} x)",
          R"({"tag_name": "v1"}{"tag_name": "v1"})", R"({"tag_name": "v1",})",
          R"({tag_name: "v1"})", R"({'tag_name': 'v1'})", R"({"tag_name": "v1"} // so far)",
          "{\"tag_name\": \"v1\n\"}", R"({"tag_name": "v1", "n": 01})", R"({"tag_name": "\ud83d"})",
          R"({"tag_name": "v1)"})
        EXPECT_EQ(releaseTag(text), std::nullopt) << text;
}

TEST(ReleaseTagTest, TextThatIsNotUtf8IsNoJson) {
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v1\xff\"}"), std::nullopt);
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v1\", \"name\": \"\xc3\"}"), std::nullopt);
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v1\", \"\xed\xa0\x80\": 1}"), std::nullopt);
}

TEST(ReleaseTagTest, AZeroByteIsNoEndOfTheText) {
    using namespace std::string_literals;
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v1\"}\0"s), std::nullopt);
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v1\"}\0 rubbish"s), std::nullopt);
    EXPECT_EQ(releaseTag("{\"tag_name\": \"v\0 1\"}"s), std::nullopt);
}

TEST(ReleaseTagTest, DepthDoesNotCostTheStack) {
    const std::size_t depth = 500'000;
    EXPECT_EQ(releaseTag(repeated("[", 1'000'000)), std::nullopt);
    EXPECT_EQ(releaseTag(R"({"tag_name": )" + repeated(R"({"tag_name":)", 80'000)), std::nullopt);
    EXPECT_EQ(releaseTag(R"({"a": )" + repeated("[", depth) + repeated("]", depth) +
                         R"(, "tag_name": "v1"})"),
              "v1");
}

TEST(ReleaseTagTest, ALongTagIsATag) {
    const std::string tag(1'000'000, '1');
    EXPECT_EQ(releaseTag("{\"tag_name\": \"" + tag + "\"}"), tag);
}

}  // namespace
}  // namespace valdorn
