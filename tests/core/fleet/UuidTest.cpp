#include <algorithm>
#include <array>
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

// Of the digits at a place, the rarest is missing among a thousand once in 10^27 runs.
TEST(Uuid, AllIsRandomButTheVersionAndTheVariant) {
    std::array<std::set<char>, 36> seen;
    for (int count = 0; count < 1000; ++count) {
        const std::string uuid = makeUuid();
        for (std::size_t place = 0; place < seen.size(); ++place)
            seen.at(place).insert(uuid.at(place));
    }
    for (std::size_t place = 0; place < seen.size(); ++place) {
        const bool fixed = place == 8 || place == 13 || place == 14 || place == 18 || place == 23;
        const std::size_t variants = 4;
        EXPECT_EQ(seen.at(place).size(), fixed ? 1U : place == 19 ? variants : 16U) << place;
    }
}

// Its parts are drawn one after the other: copies would look as random, and be guessed sooner.
TEST(Uuid, NoPartIsACopyOfAnother) {
    std::size_t mostDiffering = 0;
    for (int count = 0; count < 1000; ++count) {
        std::string digits = makeUuid();
        std::erase(digits, '-');
        std::set<std::string> ends;
        for (std::size_t part = 0; part < 4; ++part)
            ends.insert(digits.substr(8 * part + 5, 3));
        mostDiffering = std::max(mostDiffering, ends.size());
    }
    EXPECT_EQ(mostDiffering, 4U);
}

TEST(Uuid, IsNeverTheSame) {
    std::set<std::string> seen;
    for (int count = 0; count < 1000; ++count)
        seen.insert(makeUuid());
    EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace
}  // namespace valdorn
