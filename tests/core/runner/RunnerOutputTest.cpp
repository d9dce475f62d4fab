#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RunnerOutput.h"
#include "support/FaultyFileSystem.h"
#include "support/MemoryFileSystem.h"
#include "text/Text.h"

namespace valdorn {
namespace {

constexpr char logPath[] = "/log";

class RunnerOutputTest : public testing::Test {
protected:
    RunnerOutputTest() : output(std::move(files.openForAppending(logPath).value())) {}

    std::vector<std::string> ingest(std::string_view chunk) {
        std::vector<std::string> lines;
        const LineBatch batch = output.ingest(chunk);
        for (std::size_t index = 0; index < batch.size(); ++index) {
            lines.emplace_back(batch[index]);
        }
        return lines;
    }

    std::string log() { return files.files[logPath]; }

    using Lines = std::vector<std::string>;
    MemoryFileSystem files;
    RunnerOutput output;
};

TEST_F(RunnerOutputTest, CutsLinesAtLineFeeds) {
    EXPECT_EQ(ingest("one\ntwo\n\nthr"), (Lines{"one", "two", ""}));
    EXPECT_EQ(output.lineBuffer(), "thr");
    EXPECT_EQ(ingest("ee\n"), (Lines{"three"}));
    EXPECT_EQ(output.lineBuffer(), "");
}

TEST_F(RunnerOutputTest, CutsTheSameLinesFromSingleBytes) {
    Lines lines;
    for (const char c : std::string("one\r\ntwo\n\r\n\nthree\n")) {
        for (std::string& line : ingest(std::string(1, c)))
            lines.push_back(std::move(line));
    }
    EXPECT_EQ(lines, (Lines{"one\r\ntwo", "\r\n", "three"}));
}

TEST_F(RunnerOutputTest, CarriageReturnAndLineFeedAreNoLineEnd) {
    EXPECT_EQ(ingest("a\r\nb\r\n"), Lines{});
    EXPECT_EQ(output.lineBuffer(), "a\r\nb\r\n");
    EXPECT_EQ(ingest("c\n"), (Lines{"a\r\nb\r\nc"}));
}

TEST_F(RunnerOutputTest, PairSplitBetweenTwoChunksIsNoLineEnd) {
    EXPECT_EQ(ingest("a\r"), Lines{});
    EXPECT_EQ(ingest("\nb\n"), (Lines{"a\r\nb"}));
}

TEST_F(RunnerOutputTest, LineFeedAfterAPairIsALineEnd) {
    EXPECT_EQ(ingest("a\r\n\nb\n"), (Lines{"a\r\n", "b"}));
    EXPECT_EQ(ingest("\r\r\n"), Lines{});
}

TEST_F(RunnerOutputTest, LineEndOfThePreviousLineDoesNotJoinTheNext) {
    EXPECT_EQ(ingest("a\n"), (Lines{"a"}));
    EXPECT_EQ(ingest("\n"), (Lines{""}));
}

TEST_F(RunnerOutputTest, KeepsOtherControlsInTheLine) {
    EXPECT_EQ(ingest(std::string_view("a\0b\rc\n", 6)), (Lines{std::string("a\0b\rc", 5)}));
}

TEST_F(RunnerOutputTest, ChunkThatIsNotUtf8IsDroppedWhole) {
    EXPECT_EQ(ingest("kept "), Lines{});
    EXPECT_EQ(ingest("Error: lost\n\xFF\n"), Lines{});
    EXPECT_EQ(output.lineBuffer(), "kept ");
    EXPECT_EQ(ingest("line\n"), (Lines{"kept line"}));
    EXPECT_EQ(log(), "");
}

TEST_F(RunnerOutputTest, CharacterSplitBetweenTwoChunksLosesBoth) {
    EXPECT_EQ(ingest("Error: \xE2\x80"), Lines{});
    EXPECT_EQ(ingest("\xA6\n"), Lines{});
    EXPECT_EQ(ingest("x\n"), (Lines{"x"}));
}

TEST_F(RunnerOutputTest, OverlongFormsAndSurrogatesAreNotUtf8) {
    EXPECT_EQ(ingest("\xC0\x80\n"), Lines{});
    EXPECT_EQ(ingest("\xED\xA0\x80\n"), Lines{});
    EXPECT_EQ(ingest("\xF4\x90\x80\x80\n"), Lines{});
    EXPECT_EQ(ingest("\xF4\x8F\xBF\xBF\n").size(), 1U);
}

TEST_F(RunnerOutputTest, KeepsStructuredLinesAndErrors) {
    ingest("Error: unknown flag\n");
    ingest("time=\"x\" level=info msg=a\n");
    ingest("time=\"x\" level=warning msg=b\n");
    EXPECT_EQ(log(),
              "Error: unknown flag\ntime=\"x\" level=info msg=a\ntime=\"x\" level=warning msg=b\n");
}

// Counts the writes that reach it.
class CountingHandle : public AppendHandle {
public:
    explicit CountingHandle(int& writes) : writes_(writes) {}

    FileOutcome append(std::string_view) override {
        ++writes_;
        return {};
    }

private:
    int& writes_;
};

TEST(RunnerOutput, WritesOnceForAllLinesOfAChunkAndNotWhenThereAreNone) {
    int writes = 0;
    RunnerOutput output(std::make_unique<CountingHandle>(writes));
    output.ingest("a\n[CI/build] step\n");
    output.ingest("Error: but no end");
    EXPECT_EQ(writes, 0);
    output.ingest(" yet\nError: x\n");
    EXPECT_EQ(writes, 1);
}

TEST_F(RunnerOutputTest, KeepsNothingElse) {
    ingest("Worker 2 finished (ok)\n");
    ingest("time=\"x\" level=debug msg=a\n");
    ingest("time=\"x\" level=info msg=\"has level=debug in it\"\n");
    ingest("time=x level=info\n");
    ingest(" time=\"x\" level=info\n");
    ingest("error: small\n");
    ingest("x Error: not at the start\n");
    ingest("Error\n");
    ingest("[CI/build] step\n");
    ingest("\n");
    EXPECT_EQ(log(), "");
}

TEST_F(RunnerOutputTest, KeepsWhatOnlyLooksLikeDebugging) {
    const std::string line = "time=\"x\" level=debu msg=\"evel=debug\"\n";
    ingest(line);
    EXPECT_EQ(log(), line);
}

TEST_F(RunnerOutputTest, KeptErrorMaySayDebug) {
    ingest("Error: level=debug\n");
    EXPECT_EQ(log(), "Error: level=debug\n");
}

TEST_F(RunnerOutputTest, LinesThatArriveInTwoReadsAreKeptOnce) {
    EXPECT_EQ(ingest("time=\"x\" level=info msg=a\ntime=").size(), 1U);
    EXPECT_EQ(ingest("\"y\" level=debug msg=b\n").size(), 1U);
    EXPECT_EQ(log(), "time=\"x\" level=info msg=a\n");
}

TEST_F(RunnerOutputTest, PairStaysInsideAKeptLine) {
    ingest("Error: a\r\nb\n");
    EXPECT_EQ(log(), "Error: a\r\nb\n");
}

TEST_F(RunnerOutputTest, IncompleteLineIsNotKept) {
    ingest("Error: cut");
    EXPECT_EQ(log(), "");
}

TEST_F(RunnerOutputTest, WorksWithoutALog) {
    RunnerOutput unlogged(nullptr);
    EXPECT_EQ(unlogged.ingest("Error: x\n").size(), 1U);
}

TEST_F(RunnerOutputTest, ClosedLogTakesNothingMore) {
    output.closeLog();
    EXPECT_EQ(files.openHandles(), 0);
    EXPECT_EQ(ingest("Error: x\n").size(), 1U);
    EXPECT_EQ(log(), "");
}

TEST_F(RunnerOutputTest, FullDiskLosesTheLineAndGoesOn) {
    FaultyFileSystem full(files);
    RunnerOutput other(std::move(full.openForAppending(logPath).value()));
    full.failOperation(1, ENOSPC);
    EXPECT_EQ(other.ingest("Error: lost\n").size(), 1U);
    EXPECT_EQ(full.faults(), 1);
    EXPECT_EQ(other.ingest("Error: kept\n").size(), 1U);
    EXPECT_EQ(log(), "Error: kept\n");
}

// The cap on an incomplete line.

TEST_F(RunnerOutputTest, LineOfTheLimitIsLeftAlone) {
    ingest(std::string(64000, 'x'));
    EXPECT_EQ(output.lineBuffer().size(), 64000U);
}

TEST_F(RunnerOutputTest, LongerLineIsCutToItsLastCharacters) {
    ingest(std::string(62000, 'x') + std::string(8000, 'y'));
    EXPECT_EQ(output.lineBuffer(), std::string(8000, 'y'));
    ingest("\n");
    EXPECT_EQ(output.lineBuffer(), "");
}

TEST_F(RunnerOutputTest, OneByteOverTheLimitIsCut) {
    ingest(std::string(64000, 'x'));
    ingest("y");
    EXPECT_EQ(output.lineBuffer(), std::string(7999, 'x') + "y");
}

TEST_F(RunnerOutputTest, CutCountsPerceivedCharacters) {
    // A letter and a combining accent: three bytes, one character.
    std::string accented;
    for (int count = 0; count < 30000; ++count)
        accented += "e\xCC\x81";
    ingest(accented);
    EXPECT_EQ(output.lineBuffer(), accented.substr(accented.size() - 3 * 8000));
}

TEST_F(RunnerOutputTest, CutKeepsPairsWhole) {
    std::string pairs;
    for (int count = 0; count < 40000; ++count)
        pairs += "\r\n";
    ingest(pairs);
    EXPECT_EQ(output.lineBuffer().size(), 2U * 8000);
    EXPECT_EQ(output.lineBuffer().substr(0, 2), "\r\n");
}

TEST_F(RunnerOutputTest, CutHappensOnlyAfterTheLinesAreTaken) {
    EXPECT_EQ(ingest(std::string(70000, 'x') + "\nrest"), (Lines{std::string(70000, 'x')}));
    EXPECT_EQ(output.lineBuffer(), "rest");
}

TEST_F(RunnerOutputTest, FloodOfCombiningMarksStaysBounded) {
    std::string chunk;
    while (chunk.size() < 65536)
        chunk += "\xCC\x81";
    for (int count = 0; count < 40; ++count) {
        ingest(chunk);
        ASSERT_LE(output.lineBuffer().size(), Text::longestTailBytes);
    }
}

TEST_F(RunnerOutputTest, FloodWithoutLineEndsStaysBounded) {
    const std::string chunk(65536, 'x');
    for (int count = 0; count < 1000; ++count) {
        ingest(chunk);
        ASSERT_LE(output.lineBuffer().size(), RunnerOutput::maxLineBytes);
    }
}

}  // namespace
}  // namespace valdorn
