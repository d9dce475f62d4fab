#include <string>

#include <gtest/gtest.h>

#include "platform/qt/StartupNotification.h"

namespace valdorn {
namespace {

std::string joined(const std::string& id) {
    std::string text;
    for (const auto& chunk : StartupNotification::completion(id))
        text.append(chunk.data(), chunk.size());
    return text;
}

std::string padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
}

TEST(StartupNotificationTest, MessageIsCutIntoChunksAndFilledUpWithZeros) {
    EXPECT_EQ(joined("launcher-7_TIME42"), padded(R"(remove: ID="launcher-7_TIME42")", 40));
}

TEST(StartupNotificationTest, FinalZeroGetsAChunkOfItsOwnIfNeedBe) {
    EXPECT_EQ(joined("1234567"), padded(R"(remove: ID="1234567")", 40));
    EXPECT_EQ(joined("123456"), padded(R"(remove: ID="123456")", 20));
}

TEST(StartupNotificationTest, QuotesAndBackslashesAreEscaped) {
    EXPECT_EQ(joined(R"(a"b\c)"), padded(R"(remove: ID="a\"b\\c")", 40));
}

}  // namespace
}  // namespace valdorn
