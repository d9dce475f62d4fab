#include <gtest/gtest.h>

#include "platform/Environment.h"

namespace valdorn {
namespace {

TEST(EnvironmentTest, GivesTheValueOfTheVariableOfThatName) {
    EXPECT_EQ(Environment::value({"AB=1", "A=two=2", "A=3"}, "A"), "two=2");
    EXPECT_EQ(Environment::value({"AB=1", "BA=2"}, "A"), std::nullopt);
}

TEST(EnvironmentTest, VariableSetToNothingIsNotSet) {
    EXPECT_EQ(Environment::value({"A="}, "A"), std::nullopt);
}

TEST(EnvironmentTest, CharacterLocaleIsTheStrongestThatIsSet) {
    EXPECT_EQ(Environment::characterLocale({"LANG=de_DE", "LC_CTYPE=tr_TR", "LC_ALL=C"}), "C");
    EXPECT_EQ(Environment::characterLocale({"LANG=de_DE", "LC_CTYPE=tr_TR", "LC_ALL="}), "tr_TR");
    EXPECT_EQ(Environment::characterLocale({"LANG=de_DE", "LC_NUMERIC=tr_TR"}), "de_DE");
    EXPECT_EQ(Environment::characterLocale({"LANGUAGE=de"}), "");
}

}  // namespace
}  // namespace valdorn
