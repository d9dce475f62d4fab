#include <cerrno>

#include <gtest/gtest.h>

#include "platform/ErrorText.h"

namespace valdorn {
namespace {

TEST(ErrorText, NamesTheError) {
    EXPECT_EQ(errorText(ENOENT), "No such file or directory");
}

TEST(ErrorText, TellsTheNumberOfAnUnknownOne) {
    EXPECT_EQ(errorText(99999), "error 99999");
}

}  // namespace
}  // namespace valdorn
