#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LogTail.h"
#include "support/FaultyFileSystem.h"
#include "support/LogTexts.h"
#include "support/WatchedFileSystem.h"

namespace valdorn {
namespace {

using Lines = std::vector<std::string>;
using Kind = LogTail::Update::Kind;

class LogTailTest : public testing::Test {
protected:
    std::string& content() { return files.files["/log"]; }

    void expectNew(Kind kind, const Lines& lines, std::uint64_t offset) {
        const LogTail::Update update = tail.readNew();
        EXPECT_EQ(update.kind, kind);
        EXPECT_EQ(texts(update.lines), lines);
        EXPECT_EQ(tail.offset(), offset);
        EXPECT_EQ(files.openHandles(), 0);
    }
    void expectNothingNew() { expectNew(Kind::append, {}, tail.offset()); }

    // Does something to the file before the Nth call of a reader, counted from now.
    void beforeCall(int number, std::function<void()> action) {
        files.onReaderCall = [number, action = std::move(action)]() mutable {
            if (--number == 0)
                action();
        };
    }

    WatchedFileSystem files;
    LogTail tail{files, "/log", 5000};
};

TEST_F(LogTailTest, BeginsAtTheBeginningOfItsFile) {
    EXPECT_EQ(tail.path(), "/log");
    EXPECT_EQ(tail.offset(), 0U);
    content() = "a\n";
    expectNew(Kind::append, {"a"}, 2);
}

TEST_F(LogTailTest, ReloadGivesTheFileAndMovesToItsEnd) {
    content() = "a\nb\n";
    EXPECT_EQ(texts(tail.reload()), (Lines{"a", "b"}));
    EXPECT_EQ(tail.offset(), 4U);
    EXPECT_EQ(files.openHandles(), 0);
    EXPECT_EQ(texts(tail.reload()), (Lines{"a", "b"}));
    expectNothingNew();
}

TEST_F(LogTailTest, GivesWhatWasAppendedOnce) {
    content() = "a\n";
    tail.reload();
    content() += "b\nc\n";
    expectNew(Kind::append, {"b", "c"}, 6);
    expectNothingNew();
    content() += "\n";
    expectNew(Kind::append, {""}, 7);
}

TEST_F(LogTailTest, AHalfWrittenLineAndItsRestAreTwoLines) {
    content() = "beg";
    EXPECT_EQ(texts(tail.reload()), Lines{"beg"});
    content() += "un\nnext";
    expectNew(Kind::append, {"un", "next"}, 10);
    content() += "\n";
    expectNew(Kind::append, {""}, 11);
}

TEST_F(LogTailTest, ALineFeedWhoseCarriageReturnWasReadBeforeEndsALine) {
    content() = "a\r";
    EXPECT_EQ(texts(tail.reload()), Lines{"a\r"});
    content() += "\nb";
    expectNew(Kind::append, {"", "b"}, 4);
}

TEST_F(LogTailTest, ACharacterInTwoReadsIsReplacedInBoth) {
    content() = "a\xE2\x82";
    EXPECT_EQ(texts(tail.reload()), Lines{"a\xEF\xBF\xBD"});
    content() += "\xAC\n";
    expectNew(Kind::append, {"\xEF\xBF\xBD"}, 5);
}

TEST_F(LogTailTest, AShorterFileIsReadAnew) {
    content() = "old\nold\n";
    tail.reload();
    content() = "x\n";
    expectNew(Kind::reset, {"x"}, 2);
    content() += "y\n";
    expectNew(Kind::append, {"y"}, 4);
}

TEST_F(LogTailTest, AnEmptiedFileResetsToNothing) {
    content() = "old\n";
    tail.reload();
    content() = "";
    expectNew(Kind::reset, {}, 0);
    expectNothingNew();
}

TEST_F(LogTailTest, ALongerFileInPlaceIsReadOnFromTheOffset) {
    content() = "old\n";
    tail.reload();
    EXPECT_FALSE(files.replaceAtomically("/log", "quite another\n"));
    expectNew(Kind::append, {"e another"}, 14);
}

TEST_F(LogTailTest, AMissingFileIsEmptyUntilItExists) {
    EXPECT_EQ(texts(tail.reload()), Lines{});
    EXPECT_EQ(tail.offset(), 0U);
    expectNothingNew();
    content() = "a\nb\n";
    expectNew(Kind::append, {"a", "b"}, 4);
}

TEST_F(LogTailTest, AFileThatGoesMissingKeepsTheOffset) {
    content() = "a\n";
    tail.reload();
    files.files.clear();
    expectNew(Kind::append, {}, 2);
    content() = "a\nb\n";
    expectNew(Kind::append, {"b"}, 4);
}

TEST_F(LogTailTest, ReloadingAFileThatWentMissingBeginsAnew) {
    content() = "a\n";
    tail.reload();
    files.files.clear();
    EXPECT_EQ(texts(tail.reload()), Lines{});
    EXPECT_EQ(tail.offset(), 0U);
}

TEST_F(LogTailTest, GivesTheLastLinesOnly) {
    tail = LogTail(files, "/log", 2);
    content() = "a\nb\nc\n";
    EXPECT_EQ(texts(tail.reload()), (Lines{"b", "c"}));
    content() += "d\ne\nf";
    expectNew(Kind::append, {"e", "f"}, 11);
    content() = "x\ny\nz\n";
    expectNew(Kind::reset, {"y", "z"}, 6);
}

TEST_F(LogTailTest, GivesTheVeryLastLineOnlyIfNoMoreAreWanted) {
    tail = LogTail(files, "/log", 1);
    content() = "a\nb\n";
    EXPECT_EQ(texts(tail.reload()), (Lines{"b"}));
    content() += "c\nd";
    expectNew(Kind::append, {"d"}, 7);
}

using LogTailDeathTest = LogTailTest;

TEST_F(LogTailDeathTest, WantingNoLinesIsAMistake) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(LogTail(files, "/log", 0), "maxLines");
}

TEST_F(LogTailTest, CopiesGoOnByThemselves) {
    content() = "a\n";
    LogTail copy = tail;
    tail.reload();
    EXPECT_EQ(copy.offset(), 0U);
    EXPECT_EQ(texts(copy.readNew().lines), Lines{"a"});
}

TEST_F(LogTailTest, WhatComesBetweenMeasuringAndReadingIsGivenNowAndOnceMore) {
    content() = "a\n";
    beforeCall(2, [this] { content() += "b\n"; });
    expectNew(Kind::append, {"a", "b"}, 2);
    expectNew(Kind::append, {"b"}, 4);
    expectNothingNew();
}

TEST_F(LogTailTest, WhereNothingIsNewTheFileIsMeasuredOnce) {
    content() = "a\n";
    tail.reload();
    beforeCall(2, [this] { content() += "b\n"; });
    expectNothingNew();
    EXPECT_EQ(content(), "a\n");
}

TEST_F(LogTailTest, WhatComesWhileReadingIsLeftForLater) {
    content() = "a\n";
    beforeCall(3, [this] { content() += "b\n"; });
    expectNew(Kind::append, {"a"}, 2);
    expectNew(Kind::append, {"b"}, 4);
}

TEST_F(LogTailTest, WhatIsCutOffBetweenMeasuringAndReadingGivesNoLines) {
    for (const int call : {2, 3}) {
        content() = "a\n";
        tail = LogTail(files, "/log", 5000);
        tail.reload();
        content() += "b\n";
        beforeCall(call, [this] { content() = "x"; });
        expectNew(Kind::append, {}, 4);
        expectNew(Kind::reset, {"x"}, 1);
    }
}

TEST_F(LogTailTest, ReloadEndsWhereTheFileEndsWhenItBecomesShorter) {
    // Of two blocks, the first to be read is the last 64 KiB: cutting within it goes unseen then.
    const std::string before(100000, '\n');
    const std::size_t seenBelow = 100000 - 65536 + 1;
    for (const std::size_t left : {0U, 1U, 30000U, 34464U, 34465U, 65536U, 99999U}) {
        content() = before;
        tail = LogTail(files, "/log", 1000000);
        beforeCall(3, [this, left] { content() = content().substr(0, left); });
        const std::size_t read = left < seenBelow ? left : before.size();
        EXPECT_EQ(tail.reload().size(), read);
        EXPECT_EQ(tail.offset(), read);
    }
}

TEST_F(LogTailTest, AFileThatIsReplacedWhileItIsReadIsReadToItsOwnEnd) {
    content() = "a\nb\n";
    beforeCall(2, [this] { EXPECT_FALSE(files.replaceAtomically("/log", "other\n")); });
    EXPECT_EQ(texts(tail.reload()), (Lines{"a", "b"}));
}

TEST_F(LogTailTest, APollWithoutNewsReadsNothing) {
    content() = std::string(100000, 'x');
    tail.reload();
    files.bytesRead = 0;
    expectNothingNew();
    EXPECT_EQ(files.bytesRead, 0U);
    content() += "new\n";
    expectNew(Kind::append, {"new"}, 100004);
    EXPECT_EQ(files.bytesRead, 4U);
}

class LogTailFailureTest : public LogTailTest {
protected:
    FaultyFileSystem faulty{files};
    LogTail faultyTail{faulty, "/log", 5000};
};

TEST_F(LogTailFailureTest, ReloadTakesAFileThatCannotBeReadAsEmpty) {
    content() = std::string(200000, '\n');
    int number = 1;
    for (;; ++number) {
        faulty.failOperation(0, 0);
        faultyTail.reload();
        faulty.failOperation(number, EIO);
        const Lines lines = texts(faultyTail.reload());
        EXPECT_EQ(files.openHandles(), 0);
        if (faulty.faults() == 0)
            break;
        EXPECT_EQ(lines, Lines{}) << number;
        EXPECT_EQ(faultyTail.offset(), 0U) << number;
    }
    EXPECT_EQ(number, 1 + 3);  // to open, to measure, one block of 5000 short lines
}

TEST_F(LogTailFailureTest, AnErrorLeavesTheNewsForTheNextLook) {
    int number = 1;
    for (;; ++number) {
        content() = "a\n";
        faulty.failOperation(0, 0);
        faultyTail.reload();
        content() += "b\n" + std::string(150000, 'c');
        faulty.failOperation(number, EIO);
        const LogTail::Update update = faultyTail.readNew();
        EXPECT_EQ(files.openHandles(), 0);
        if (faulty.faults() == 0)
            break;
        EXPECT_EQ(update.kind, Kind::append) << number;
        EXPECT_EQ(texts(update.lines), Lines{}) << number;
        EXPECT_EQ(faultyTail.offset(), 2U) << number;
        EXPECT_EQ(texts(faultyTail.readNew().lines), (Lines{"b", std::string(150000, 'c')}))
            << number;
    }
    EXPECT_EQ(number, 1 + 6);  // to open, to measure twice, three blocks
}

TEST_F(LogTailFailureTest, AnErrorWhileAShorterFileIsReadEmptiesTheView) {
    for (int number = 3; number <= 5; ++number) {
        content() = "a\nb\n";
        faulty.failOperation(0, 0);
        faultyTail.reload();
        content() = "x\n";
        faulty.failOperation(number, EIO);
        const LogTail::Update update = faultyTail.readNew();
        EXPECT_EQ(faulty.faults(), 1);
        EXPECT_EQ(update.kind, Kind::reset) << number;
        EXPECT_EQ(texts(update.lines), Lines{}) << number;
        EXPECT_EQ(faultyTail.offset(), 0U) << number;
        EXPECT_EQ(texts(faultyTail.readNew().lines), Lines{"x"}) << number;
    }
}

}  // namespace
}  // namespace valdorn
