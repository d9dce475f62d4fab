#pragma once

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "platform/UserDefaults.h"

namespace valdorn {

// What every UserDefaults does. The fixture has:
//   UserDefaults& defaults();  // an empty domain at first
//   void reopen();             // as a new process sees the same domain: defaults() is another
//                              // object, without fallbacks
template <typename Fixture>
class UserDefaultsContract : public testing::Test {
protected:
    UserDefaults& defaults() { return fixture_.defaults(); }
    void reopen() { fixture_.reopen(); }

private:
    Fixture fixture_;
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, AKeyThatWasNeverSetHasNoText) {
    EXPECT_EQ(this->defaults().string("key"), std::nullopt);
    EXPECT_FALSE(this->defaults().boolean("key"));
}

TYPED_TEST_P(UserDefaultsContract, KeepsText) {
    for (const std::string text : {"plain", "", " blanks around ", "a,b;c=d", "\"quoted\"", "%41",
                                   "line\nend\ttab", "back\\slash", "Zoë – 鸟 🐦", "@Invalid()"}) {
        this->defaults().setString("key", text);
        EXPECT_EQ(this->defaults().string("key"), text);
        this->reopen();
        EXPECT_EQ(this->defaults().string("key"), text);
    }
}

TYPED_TEST_P(UserDefaultsContract, KeepsTruthValues) {
    this->defaults().setBoolean("key", true);
    EXPECT_TRUE(this->defaults().boolean("key"));
    this->reopen();
    EXPECT_TRUE(this->defaults().boolean("key"));
    this->defaults().setBoolean("key", false);
    EXPECT_FALSE(this->defaults().boolean("key"));
    this->reopen();
    EXPECT_FALSE(this->defaults().boolean("key"));
}

TYPED_TEST_P(UserDefaultsContract, TextThatMeansYesIsTrue) {
    for (const char* const yes : {"true", "1", "yes"}) {
        this->defaults().setString("key", yes);
        EXPECT_TRUE(this->defaults().boolean("key")) << yes;
    }
    for (const char* const other : {"false", "0", "no", "", "2", "truth"}) {
        this->defaults().setString("key", other);
        EXPECT_FALSE(this->defaults().boolean("key")) << other;
    }
}

TYPED_TEST_P(UserDefaultsContract, ATruthValueCanBeReadAsText) {
    this->defaults().setBoolean("yes", true);
    this->defaults().setBoolean("no", false);
    EXPECT_EQ(this->defaults().string("yes"), "true");
    EXPECT_EQ(this->defaults().string("no"), "false");
    this->reopen();
    EXPECT_EQ(this->defaults().string("yes"), "true");
    EXPECT_EQ(this->defaults().string("no"), "false");
}

TYPED_TEST_P(UserDefaultsContract, TheValueStoredLastCountsWhateverItsType) {
    this->defaults().setBoolean("key", true);
    this->defaults().setString("key", "no");
    EXPECT_FALSE(this->defaults().boolean("key"));
    EXPECT_EQ(this->defaults().string("key"), "no");
    this->defaults().setBoolean("key", true);
    EXPECT_TRUE(this->defaults().boolean("key"));
    EXPECT_EQ(this->defaults().string("key"), "true");
    this->reopen();
    EXPECT_EQ(this->defaults().string("key"), "true");
}

TYPED_TEST_P(UserDefaultsContract, KeysDoNotMix) {
    this->defaults().setString("one", "1st");
    this->defaults().setString("two", "2nd");
    this->defaults().setString("One", "capital");
    this->reopen();
    EXPECT_EQ(this->defaults().string("one"), "1st");
    EXPECT_EQ(this->defaults().string("two"), "2nd");
    EXPECT_EQ(this->defaults().string("One"), "capital");
}

TYPED_TEST_P(UserDefaultsContract, AFallbackAnswersForAKeyThatWasNeverSet) {
    this->defaults().registerFallbacks({{"key", "fallback"}, {"empty", ""}});
    EXPECT_EQ(this->defaults().string("key"), "fallback");
    EXPECT_EQ(this->defaults().string("empty"), "");
}

TYPED_TEST_P(UserDefaultsContract, AStoredValueGoesBeforeAFallback) {
    this->defaults().setString("set", "stored");
    this->defaults().setString("empty", "");
    this->defaults().registerFallbacks({{"set", "fallback"}, {"empty", "fallback"}});
    EXPECT_EQ(this->defaults().string("set"), "stored");
    EXPECT_EQ(this->defaults().string("empty"), "");
}

TYPED_TEST_P(UserDefaultsContract, FallbacksAreNeverWritten) {
    this->defaults().registerFallbacks({{"key", "fallback"}});
    this->defaults().setString("other", "stored");
    this->reopen();
    EXPECT_EQ(this->defaults().string("key"), std::nullopt);
    EXPECT_EQ(this->defaults().string("other"), "stored");
}

TYPED_TEST_P(UserDefaultsContract, AValueEqualToItsFallbackIsStoredAllTheSame) {
    this->defaults().registerFallbacks({{"key", "same"}});
    this->defaults().setString("key", "same");
    this->reopen();
    EXPECT_EQ(this->defaults().string("key"), "same");
}

TYPED_TEST_P(UserDefaultsContract, LaterFallbacksReplaceAndAdd) {
    this->defaults().registerFallbacks({{"key", "first"}, {"kept", "first"}});
    this->defaults().registerFallbacks({{"key", "second"}});
    EXPECT_EQ(this->defaults().string("key"), "second");
    EXPECT_EQ(this->defaults().string("kept"), "first");
}

TYPED_TEST_P(UserDefaultsContract, FallbacksAreTextsOnly) {
    this->defaults().registerFallbacks({{"key", "true"}});
    EXPECT_FALSE(this->defaults().boolean("key"));
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, AKeyThatWasNeverSetHasNoText, KeepsText,
                            KeepsTruthValues, TextThatMeansYesIsTrue, ATruthValueCanBeReadAsText,
                            TheValueStoredLastCountsWhateverItsType, KeysDoNotMix,
                            AFallbackAnswersForAKeyThatWasNeverSet, AStoredValueGoesBeforeAFallback,
                            FallbacksAreNeverWritten, AValueEqualToItsFallbackIsStoredAllTheSame,
                            LaterFallbacksReplaceAndAdd, FallbacksAreTextsOnly);

}  // namespace valdorn
