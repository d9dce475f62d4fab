#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "fleet/Uuid.h"

namespace valdorn {
namespace {

TEST(Uuid, IsCanonicalRandomAndUpperCase) {
    for (int count = 0; count < 1000; ++count) {
        const std::string uuid = makeUuid();
        ASSERT_EQ(uuid.size(), 36U);
        std::string shape = uuid;
        std::replace_if(
            shape.begin(), shape.end(),
            [](char c) {
                return std::string_view("0123456789ABCDEF").find(c) != std::string::npos;
            },
            'X');
        EXPECT_EQ(shape, "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX") << uuid;
        EXPECT_EQ(uuid[14], '4') << "not the random kind: " << uuid;
        EXPECT_NE(std::string_view("89AB").find(uuid[19]), std::string::npos) << uuid;
    }
}

TEST(Uuid, IsNeverTheSame) {
    std::set<std::string> seen;
    for (int count = 0; count < 1000; ++count)
        seen.insert(makeUuid());
    EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace
}  // namespace valdorn
