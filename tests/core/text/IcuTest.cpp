#include <new>

#include <gtest/gtest.h>

#include "text/Icu.h"

namespace valdorn {
namespace {

TEST(Icu, FailureIsAShortageOfMemory) {
    EXPECT_THROW(Icu::require(U_MEMORY_ALLOCATION_ERROR), std::bad_alloc);
    EXPECT_NO_THROW(Icu::require(U_ZERO_ERROR));
    EXPECT_NO_THROW(Icu::require(U_USING_DEFAULT_WARNING));
}

}  // namespace
}  // namespace valdorn
