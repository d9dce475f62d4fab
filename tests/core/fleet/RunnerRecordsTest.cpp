#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fleet/RunnerRecords.h"

namespace valdorn {
namespace {

const RunnerConfig record{"legacy", "runner", "", "macos", "", true};
constexpr char recordJson[] =
    R"([{"id":"legacy","name":"runner","instanceURL":"","labels":"macos","extraPath":"","legacy":true}])";

std::string with(const std::string& from, const std::string& to) {
    std::string json = recordJson;
    return json.replace(json.find(from), from.size(), to);
}

TEST(RunnerRecords, AreWrittenCompactInTheOrderOfTheFields) {
    EXPECT_EQ(RunnerRecords::encode({record}), recordJson);
}

TEST(RunnerRecords, EmptyListIsAnEmptyArray) {
    EXPECT_EQ(RunnerRecords::encode({}), "[]");
}

TEST(RunnerRecords, SlashesAreEscaped) {
    RunnerConfig changed = record;
    changed.instanceURL = "https://gitea.test/";
    EXPECT_NE(RunnerRecords::encode({changed})->find(R"("https:\/\/gitea.test\/")"),
              std::string::npos);
}

TEST(RunnerRecords, TextsOfAllKindsComeBackAsTheyWere) {
    RunnerConfig odd{"i\\/d",
                     "quote \" slash / back \\ tab \t line \n bell \a zero " + std::string(1, '\0'),
                     "\xF0\x9F\x90\xA6",
                     "\xD7\xA9\xD7\x9C",
                     "\x7F\x1F",
                     false};
    const auto json = RunnerRecords::encode({odd, record});
    ASSERT_TRUE(json);
    EXPECT_EQ(RunnerRecords::decode(*json), (std::vector{odd, record}));
}

TEST(RunnerRecords, TextThatIsNotUtf8CannotBeWritten) {
    RunnerConfig broken = record;
    broken.name = "\xFF";
    EXPECT_EQ(RunnerRecords::encode({broken}), std::nullopt);
}

TEST(RunnerRecords, SlashesMayBeEscapedOrNotWhenRead) {
    for (const char* url : {R"("a/b")", R"("a\/b")", R"("a\u002fb")"}) {
        const auto records = RunnerRecords::decode(
            with(R"("instanceURL":"")", std::string(R"("instanceURL":)") + url));
        ASSERT_TRUE(records);
        EXPECT_EQ(records->front().instanceURL, "a/b");
    }
}

TEST(RunnerRecords, KeyOrderAndOtherKeysDoNotMatter) {
    EXPECT_EQ(RunnerRecords::decode(
                  R"( [ {"legacy":true, "more":[1,{}], "extraPath":"", "labels":"macos",
                        "instanceURL":"", "name":"runner", "id":"legacy"} ] )"),
              std::vector{record});
}

TEST(RunnerRecords, SameIdTwiceIsTwoRecords) {
    EXPECT_EQ(RunnerRecords::decode(*RunnerRecords::encode({record, record})),
              (std::vector{record, record}));
}

TEST(RunnerRecords, EmptyArrayIsAnEmptyList) {
    EXPECT_EQ(RunnerRecords::decode("[]"), std::vector<RunnerConfig>{});
}

TEST(RunnerRecords, EachKeyMustBeThere) {
    for (const char* key : {"id", "name", "instanceURL", "labels", "extraPath", "legacy"}) {
        EXPECT_EQ(RunnerRecords::decode(with("\"" + std::string(key) + "\":", "\"other\":")),
                  std::nullopt)
            << key;
    }
}

TEST(RunnerRecords, EachKeyMustHaveItsType) {
    for (const char* pair : {R"("id":"legacy")", R"("name":"runner")", R"("instanceURL":"")",
                             R"("labels":"macos")", R"("extraPath":"")", R"("legacy":true)"}) {
        const std::string text = pair;
        const std::string key = text.substr(0, text.find(':') + 1);
        for (const char* value : {"null", "1", "{}", "[]"}) {
            EXPECT_EQ(RunnerRecords::decode(with(text, key + value)), std::nullopt) << key << value;
        }
    }
    EXPECT_EQ(RunnerRecords::decode(with(R"("legacy":true)", R"("legacy":"true")")), std::nullopt);
    EXPECT_EQ(RunnerRecords::decode(with(R"("name":"runner")", R"("name":true)")), std::nullopt);
}

TEST(RunnerRecords, OneBadRecordSpoilsTheList) {
    const std::string good = recordJson;
    EXPECT_EQ(RunnerRecords::decode(good.substr(0, good.size() - 1) + ",{}]"), std::nullopt);
    EXPECT_EQ(RunnerRecords::decode(good.substr(0, good.size() - 1) + ",null]"), std::nullopt);
}

TEST(RunnerRecords, AnythingButAnArrayIsNone) {
    for (const std::string& json :
         {std::string(), std::string("{}"), std::string("null"), std::string("[{]"),
          std::string("[] x"), std::string("\"[]\""), std::string("\xFF\xFE"), std::string(3, '\0'),
          std::string(recordJson) + '\0', std::string(recordJson).substr(1),
          std::string(100000, '[')}) {
        EXPECT_EQ(RunnerRecords::decode(json), std::nullopt);
    }
}

}  // namespace
}  // namespace valdorn
