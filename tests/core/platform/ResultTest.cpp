#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/Result.h"

namespace valdorn {
namespace {

TEST(ResultTest, HoldsAValue) {
    Result<int, std::string> result(4);
    EXPECT_TRUE(result.ok());
    EXPECT_TRUE(result);
    EXPECT_EQ(result.value(), 4);
    result.value() = 5;
    EXPECT_EQ(std::as_const(result).value(), 5);
}

TEST(ResultTest, HoldsAReason) {
    const Result<int, std::string> result(std::string("why"));
    EXPECT_FALSE(result.ok());
    EXPECT_FALSE(result);
    EXPECT_EQ(result.error(), "why");
}

TEST(ResultTest, ReadingTheOtherHalfIsAnErrorOfTheCaller) {
    Result<int, std::string> value(4);
    Result<int, std::string> reason(std::string("why"));
    EXPECT_THROW(static_cast<void>(value.error()), std::bad_variant_access);
    EXPECT_THROW(static_cast<void>(reason.value()), std::bad_variant_access);
}

TEST(ResultTest, MovesWhatCannotBeCopied) {
    Result<std::unique_ptr<int>, std::string> result(std::make_unique<int>(4));
    Result<std::unique_ptr<int>, std::string> moved = std::move(result);
    const std::unique_ptr<int> taken = std::move(moved.value());
    EXPECT_EQ(*taken, 4);
}

}  // namespace
}  // namespace valdorn
