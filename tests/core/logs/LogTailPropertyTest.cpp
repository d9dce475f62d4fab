#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LogTail.h"
#include "support/LogTexts.h"
#include "support/PlainLines.h"
#include "support/WatchedFileSystem.h"
#include "text/Utf8.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t blockBytes = 65536;

// What logs are made of, and what they should not be made of.
class RandomLog {
public:
    explicit RandomLog(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }

    template <typename Values>
    auto oneOf(const Values& values) {
        return values[below(values.size())];
    }

    // Mostly letters, every `rarity`th piece or so something else.
    std::string bytes(std::size_t size, std::size_t rarity) {
        static const std::vector<std::string> others{"\n",
                                                     "\n",
                                                     "\n\n",
                                                     "\r\n",
                                                     "\r",
                                                     "\r\r\n",
                                                     "\n\r",
                                                     "\xC3\xA9",
                                                     "\xE2\x80\xA6",
                                                     "\xF0\x9F\x90\xA6",
                                                     "\x80",
                                                     "\xFF",
                                                     "\xC0\xAF",
                                                     "\xE2\x82",
                                                     "\xED\xA0\x80",
                                                     "\xF0\x80\x80",
                                                     "\xF4\x90\x80",
                                                     "\xF0\x9F\x90",
                                                     std::string(1, '\0')};
        std::string text;
        while (text.size() < size) {
            if (below(rarity) == 0)
                text += oneOf(others);
            else
                text += static_cast<char>('a' + below(26));
        }
        text.resize(size);  // cuts where it cuts
        return text;
    }

    // Sizes at which blocks begin and end, and any.
    std::size_t size() {
        static const std::vector<std::size_t> edges{0, 1, 2, 3, blockBytes, 2 * blockBytes};
        if (below(3) == 0)
            return below(3 * blockBytes);
        return std::max<std::size_t>(oneOf(edges) + below(5), 2) - 2;
    }

    std::size_t rarity() { return oneOf(std::vector<std::size_t>{2, 5, 100, 20000}); }

    std::size_t maxLines() { return oneOf(std::vector<std::size_t>{1, 2, 3, 5, 7, 100, 5000}); }

private:
    std::mt19937 random_;
};

// How much is compared: a failure names the seed that shows it.
constexpr unsigned seeds = 150;

TEST(LogTailProperty, TextIsDecodedAsIcuDoesIt) {
    for (unsigned seed = 1; seed <= 20 * seeds; ++seed) {
        RandomLog log(seed);
        const std::string bytes = log.bytes(log.below(300), log.rarity());
        ASSERT_EQ(decodedUtf8(bytes), plainText(bytes)) << "seed " << seed;
        ASSERT_EQ(isWellFormedUtf8(bytes), plainText(bytes) == bytes) << "seed " << seed;
    }
}

TEST(LogTailProperty, ReloadGivesWhatReadingEverythingGives) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        RandomLog log(seed);
        MemoryFileSystem files;
        const std::string bytes = files.files["/log"] = log.bytes(log.size(), log.rarity());
        const std::size_t maxLines = log.maxLines();
        LogTail tail(files, "/log", maxLines);
        ASSERT_TRUE(texts(tail.reload()) == plainLines(bytes, maxLines)) << "seed " << seed;
        ASSERT_EQ(tail.offset(), bytes.size()) << "seed " << seed;
        ASSERT_TRUE(texts(LogTail::split(bytes)) == plainLines(bytes, bytes.size() + 1))
            << "seed " << seed;
    }
}

TEST(LogTailProperty, EachLookGivesWhatReadingTheNewGives) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        RandomLog log(seed);
        MemoryFileSystem files;
        std::string& content = files.files["/log"];
        const std::size_t maxLines = log.maxLines();
        LogTail tail(files, "/log", maxLines);
        for (int look = 0; look < 4; ++look) {
            const std::string added = log.bytes(log.size(), log.rarity());
            content += added;
            const LogTail::Update update = tail.readNew();
            ASSERT_EQ(update.kind, LogTail::Update::Kind::append) << "seed " << seed;
            ASSERT_TRUE(texts(update.lines) == plainLines(added, maxLines)) << "seed " << seed;
            ASSERT_EQ(tail.offset(), content.size()) << "seed " << seed;
        }
    }
}

TEST(LogTailProperty, PairsAreKeptTogetherAcrossBlocks) {
    for (const std::string middle :
         {"\r\n", "\n\r\n", "\r\n\n", "\r\r\n", "\n", "\n\n", "\r", "\n\r"}) {
        for (std::size_t behind = blockBytes - 4; behind <= blockBytes + 1; ++behind) {
            for (const std::size_t before : {std::size_t{0}, std::size_t{3}, blockBytes}) {
                MemoryFileSystem files;
                const std::string bytes =
                    std::string(before, 'a') + middle + std::string(behind, 'b');
                files.files["/log"] = "skipped\r" + bytes;
                LogTail tail(files, "/log", 5);
                ASSERT_TRUE(texts(tail.reload()) == plainLines("skipped\r" + bytes, 5)) << behind;
                files.files["/log"] += bytes;
                ASSERT_TRUE(texts(tail.readNew().lines) == plainLines(bytes, 5)) << behind;
            }
        }
    }
}

// Somebody cuts the file or writes to it while it is read: what comes out is what it held before or
// after that.
TEST(LogTailProperty, AChangeWhileReadingShowsAsIfBeforeOrAfter) {
    for (unsigned seed = 1; seed <= 4 * seeds; ++seed) {
        RandomLog log(seed);
        WatchedFileSystem files;
        std::string& content = files.files["/log"];
        const std::size_t maxLines = log.maxLines();
        const std::string before = content = log.bytes(3 * log.size(), log.rarity());
        LogTail tail(files, "/log", maxLines);
        const bool isReload = log.below(2) == 0;
        if (!isReload) {
            content.resize(log.below(before.size() + 1));
            tail.reload();
            content = before;
        }
        const std::size_t offset = tail.offset();
        const std::string after = log.below(2) == 0
                                      ? before + log.bytes(log.size(), log.rarity())
                                      : before.substr(0, log.below(before.size() + 1));
        std::size_t calls = log.below(6) + 1;
        files.onReaderCall = [&] {
            if (--calls == 0)
                content = after;
        };
        const auto expected = [&](const std::string& bytes) {
            return plainLines(bytes.substr(std::min(offset, bytes.size())), maxLines);
        };
        const LogTail::Update update =
            isReload ? LogTail::Update{LogTail::Update::Kind::append, tail.reload()}
                     : tail.readNew();
        if (update.kind == LogTail::Update::Kind::reset)
            ASSERT_TRUE(texts(update.lines) == plainLines(after, maxLines)) << "seed " << seed;
        else
            ASSERT_TRUE(texts(update.lines) == expected(before) ||
                        texts(update.lines) == expected(after))
                << "seed " << seed;
        ASSERT_TRUE(tail.offset() == before.size() || tail.offset() == after.size())
            << "seed " << seed;
    }
}

// A log of 4 GB that is made up as it is read: lines of 128 bytes, each with its number.
class HugeLog : public MemoryFileSystem {
public:
    static constexpr std::uint64_t lineBytes = 128;
    static constexpr std::uint64_t lines = std::uint64_t{1} << 25U;

    static std::string line(std::uint64_t number) {
        std::string text = std::to_string(number);
        return text + std::string(lineBytes - 1 - text.size(), '.');
    }

    Result<std::unique_ptr<ReadHandle>, FileError> openForReading(
        const std::string& /*path*/) const override {
        return std::unique_ptr<ReadHandle>(std::make_unique<Reader>(*this));
    }

    mutable std::uint64_t bytesRead = 0;

private:
    class Reader : public ReadHandle {
    public:
        explicit Reader(const HugeLog& owner) : owner_(owner) {}
        Result<std::uint64_t, FileError> sizeBytes() const override { return lines * lineBytes; }
        Result<std::string, FileError> readAt(std::uint64_t offset,
                                              std::size_t maxBytes) const override {
            owner_.bytesRead += maxBytes;
            std::string bytes;
            const std::uint64_t first = offset / lineBytes;
            for (std::uint64_t number = first; bytes.size() < offset % lineBytes + maxBytes;
                 ++number)
                bytes += line(number) + "\n";
            return bytes.substr(offset % lineBytes, maxBytes);
        }

    private:
        const HugeLog& owner_;
    };
};

TEST(LogTailOfAHugeFile, ReadsHardlyMoreThanTheLastLines) {
    const HugeLog files;
    LogTail tail(files, "/log", 5000);
    const Lines lines = texts(tail.reload());
    ASSERT_EQ(lines.size(), 5000U);
    EXPECT_EQ(lines.front(), HugeLog::line(HugeLog::lines - 5000));
    EXPECT_EQ(lines.back(), HugeLog::line(HugeLog::lines - 1));
    EXPECT_EQ(tail.offset(), HugeLog::lines * HugeLog::lineBytes);
    EXPECT_LE(files.bytesRead, 5000 * HugeLog::lineBytes + blockBytes);
}

TEST(LogTailOfAHugeFile, ReadsHardlyMoreThanTheLastLinesOfTheNew) {
    const HugeLog files;
    LogTail tail(files, "/log", 10);
    EXPECT_EQ(tail.readNew().lines.size(), 10U);
    EXPECT_EQ(tail.offset(), HugeLog::lines * HugeLog::lineBytes);
    EXPECT_LE(files.bytesRead, blockBytes);
}

}  // namespace
}  // namespace valdorn
