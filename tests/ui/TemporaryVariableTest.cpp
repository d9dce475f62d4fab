#include <QtGlobal>

#include <gtest/gtest.h>

#include "platform/qt/TemporaryVariable.h"

namespace valdorn {

namespace {

constexpr char name[] = "VALDORN_TEST_VARIABLE";

TEST(TemporaryVariableTest, IsGoneAgainWhereThereWasNone) {
    qunsetenv(name);
    {
        const TemporaryVariable variable(name, "1");
        EXPECT_EQ(qgetenv(name), "1");
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet(name));
}

TEST(TemporaryVariableTest, PutsBackWhatWasThereAlsoWhereThatIsEmpty) {
    for (const char* before : {"mine", ""}) {
        qputenv(name, before);
        {
            const TemporaryVariable variable(name, "1");
            EXPECT_EQ(qgetenv(name), "1");
        }
        EXPECT_TRUE(qEnvironmentVariableIsSet(name));
        EXPECT_EQ(qgetenv(name), before);
    }
    qunsetenv(name);
}

}  // namespace

}  // namespace valdorn
