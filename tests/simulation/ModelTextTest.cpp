#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/ModelText.h"

namespace valdorn::simulation {
namespace {

using Texts = std::vector<std::string>;
using Says = ModelLine::Says;

// The model is the measure, so it is held to examples that were worked out by hand.

TEST(ModelTextTest, SplitsAtLineFeedsThatAreCharactersOfTheirOwn) {
    EXPECT_EQ(ModelText::lines("a\nb\n"), (Texts{"a", "b"}));
    EXPECT_EQ(ModelText::lines("a\n\nb"), (Texts{"a", "", "b"}));
    EXPECT_EQ(ModelText::lines("a\n\n"), (Texts{"a", ""}));
    EXPECT_EQ(ModelText::lines("a\r\nb\r\n"), (Texts{"a\r\nb\r\n"}));
    EXPECT_EQ(ModelText::lines(""), Texts{});
}

TEST(ModelTextTest, TellsWellFormedFromBroken) {
    for (const char* text : {"", "a", "é", "漢", "😀", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(ModelText::isUtf8(text)) << text;
    for (const char* text :
         {"\x80", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82"})
        EXPECT_FALSE(ModelText::isUtf8(text)) << text;
}

TEST(ModelTextTest, EachMaximalPartOfABrokenSequenceIsOneReplacement) {
    EXPECT_EQ(ModelText::decoded("a\xE2\x82z"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(ModelText::decoded("\xF0\x80\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(ModelTextTest, CountsCharactersAsPeopleDo) {
    EXPECT_EQ(ModelText::lastCharacters("abc", 2), "bc");
    EXPECT_EQ(ModelText::lastCharacters("ae\xCC\x81", 1), "e\xCC\x81");
    EXPECT_EQ(ModelText::lastCharacters("a\r\n", 1), "\r\n");
    EXPECT_EQ(ModelText::lastCharacters("a漢😀", 2), "漢😀");
    EXPECT_EQ(ModelText::lastCharacters("a", 5), "a");
}

TEST(ModelTextTest, ReadsLinesInTheOrderOfTheRules) {
    EXPECT_EQ(ModelLine("task 7 repo is acme/site ok").repository, "acme/site");
    EXPECT_EQ(ModelLine("repo is acme").says, Says::nothing);
    EXPECT_EQ(ModelLine(" repo is  Running job with maxParallel").repository, "Running");
    EXPECT_EQ(ModelLine("declare successfully repo is ").says, Says::declared);
    EXPECT_EQ(ModelLine("Worker 3 finished (ok) declare successfully").says, Says::jobFinished);
    EXPECT_EQ(ModelLine("job finished (ok)").says, Says::nothing);
    EXPECT_EQ(ModelLine("declare successfully permission denied").says, Says::declared);
    EXPECT_EQ(ModelLine("No route to host").says, Says::nothing);
}

TEST(ModelTextTest, ReadsLabelsVersionsAndWhatIsKept) {
    EXPECT_EQ(ModelLine("[My Flow/job] x").job, "My Flow/job");
    EXPECT_EQ(ModelLine("[//a/b] x").job, "//a/b");
    for (const char* line : {"[a/b c] x", "[a/]", "[/b]", "[]", "[ab]", "x [a/b]", "[a/b"})
        EXPECT_EQ(ModelLine(line).job, std::nullopt) << line;
    EXPECT_EQ(ModelLine("with version: 1.2.3, with").version, "1.2.3");
    EXPECT_EQ(ModelLine("with version: ").version, std::nullopt);
    EXPECT_TRUE(ModelLine("Error: x").isKept);
    EXPECT_TRUE(ModelLine("time=\"x\" level=info").isKept);
    EXPECT_FALSE(ModelLine("time=\"x\" level=debug").isKept);
    EXPECT_FALSE(ModelLine("time=x").isKept);
}

TEST(ModelTextTest, LettersWithMarksBecomeSmallToo) {
    EXPECT_EQ(ModelText::lowered("AZ[ Ünit À Þ"), "az[ ünit à þ");
    EXPECT_EQ(ModelText::lowered("× ß Ω"), "× ß Ω");
}

}  // namespace
}  // namespace valdorn::simulation
