#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "logs/LogTailer.h"
#include "support/LogTexts.h"
#include "support/MemoryFileSystem.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class LogTailerTest : public testing::Test {
protected:
    std::string& content() { return files.files["/log"]; }

    Texts shown() const { return texts(tailer->lines()); }

    static std::string numbered(int first, int end) {
        std::string text;
        for (int number = first; number < end; ++number)
            text += std::to_string(number) + "\n";
        return text;
    }

    VirtualMainQueue queue;
    MemoryFileSystem files;
    std::shared_ptr<LogTailer> tailer = LogTailer::create(queue, files, "/log");
    int announcements = 0;
    Texts announcedOver;  // what was shown when the last announcement came
    Subscription subscription = tailer->onWillChange([this] {
        ++announcements;
        announcedOver = shown();
    });
};

TEST_F(LogTailerTest, BeginsEmptyAndIdle) {
    content() = "a\n";
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(files.reads, Texts{});
    tailer = LogTailer::create(queue, files, "/log");
    EXPECT_EQ(shown(), Texts{});
}

TEST_F(LogTailerTest, StartShowsTheFileAtOnce) {
    content() = "a\nb\n";
    tailer->start();
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(queue.pending(), 1U);
}

TEST_F(LogTailerTest, LooksForNewLinesOnceASecond) {
    tailer->start();
    content() = "a\n";
    queue.advance(999ms);
    EXPECT_EQ(shown(), Texts{});
    queue.advance(1ms);
    EXPECT_EQ(shown(), Texts{"a"});
    content() += "b\n";
    queue.advance(1s);
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
}

TEST_F(LogTailerTest, AStoppedTailerKeepsItsLinesAndSleeps) {
    content() = "a\n";
    tailer->start();
    tailer->stop();
    EXPECT_EQ(queue.pending(), 0U);
    content() += "b\n";
    queue.advance(5s);
    EXPECT_EQ(shown(), Texts{"a"});
    tailer->stop();
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogTailerTest, StoppingWhatWasNeverStartedIsHarmless) {
    tailer->stop();
    EXPECT_EQ(shown(), Texts{});
}

TEST_F(LogTailerTest, AnotherStartReadsTheWholeFileAgain) {
    content() = "a\n";
    tailer->start();
    tailer->stop();
    tailer->clear();
    content() += "b\n";
    tailer->start();
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
    EXPECT_EQ(queue.pending(), 1U);
    content() += "c\n";
    queue.advance(1s);
    EXPECT_EQ(shown(), (Texts{"a", "b", "c"}));
}

TEST_F(LogTailerTest, AStartWithoutAStopLeavesTheEarlierPollingGoing) {
    tailer->start();
    queue.advance(500ms);
    tailer->start();
    EXPECT_EQ(queue.pending(), 2U);
    files.reads.clear();
    queue.advance(1s);
    EXPECT_EQ(files.reads.size(), 2U);
    tailer->stop();
    EXPECT_EQ(queue.pending(), 1U);
    content() = "a\n";
    queue.advance(1s);
    EXPECT_EQ(shown(), Texts{"a"});
}

TEST_F(LogTailerTest, PollingKeepsNobodyAlive) {
    tailer->start();
    tailer->start();
    const std::weak_ptr<LogTailer> gone = tailer;
    tailer.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(queue.pending(), 1U);  // the one that nobody could stop
    files.reads.clear();
    queue.advance(2s);
    EXPECT_EQ(files.reads, Texts{});
}

TEST_F(LogTailerTest, ATailerThatGoesTakesItsPollingAlong) {
    tailer->start();
    tailer.reset();
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LogTailerTest, AnnouncesNewLinesBeforeTheyAreThere) {
    content() = "a\n";
    tailer->reload();
    content() += "b\n";
    tailer->poll();
    EXPECT_EQ(announcements, 2);
    EXPECT_EQ(announcedOver, Texts{"a"});
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
}

TEST_F(LogTailerTest, NothingNewIsNoChange) {
    content() = "a\n";
    tailer->reload();
    const LogLines before = tailer->lines();
    tailer->poll();
    files.files.clear();
    tailer->poll();
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(tailer->lines(), before);
}

TEST_F(LogTailerTest, AShorterFileReplacesTheLines) {
    content() = "old\nold\n";
    tailer->reload();
    content() = "x\n";
    tailer->poll();
    EXPECT_EQ(shown(), Texts{"x"});
    EXPECT_EQ(announcements, 2);
    EXPECT_EQ(announcedOver, (Texts{"old", "old"}));
}

TEST_F(LogTailerTest, AnEmptiedFileEmptiesTheLines) {
    content() = "old\n";
    tailer->reload();
    content() = "";
    tailer->poll();
    EXPECT_EQ(shown(), Texts{});
    EXPECT_EQ(announcements, 2);
}

TEST_F(LogTailerTest, ReloadReplacesTheLinesAndSaysSoEvenWhenTheyAreEqual) {
    content() = "a\n";
    tailer->reload();
    tailer->reload();
    EXPECT_EQ(shown(), Texts{"a"});
    EXPECT_EQ(announcements, 2);
}

TEST_F(LogTailerTest, AMissingFileShowsNothingUntilItExists) {
    tailer->start();
    queue.advance(3s);
    EXPECT_EQ(shown(), Texts{});
    EXPECT_EQ(announcements, 1);
    content() = "a\nb\n";
    queue.advance(1s);
    EXPECT_EQ(shown(), (Texts{"a", "b"}));
}

TEST_F(LogTailerTest, ShowsNoMoreThanTheLastFiveThousandLines) {
    content() = numbered(0, 10);
    tailer->reload();
    content() += numbered(10, 6010);
    tailer->poll();
    ASSERT_EQ(tailer->lines().size(), 5000U);
    EXPECT_EQ(shown().front(), "1010");
    EXPECT_EQ(shown().back(), "6009");
    tailer->reload();
    ASSERT_EQ(tailer->lines().size(), 5000U);
    EXPECT_EQ(shown().front(), "1010");
    content() = numbered(0, 5001);
    tailer->poll();
    ASSERT_EQ(tailer->lines().size(), 5000U);
    EXPECT_EQ(shown().front(), "1");
}

TEST_F(LogTailerTest, TheOldestLinesGoAndTheOthersStayTheSameObjects) {
    content() = numbered(0, 4999);
    tailer->reload();
    const LogLines before = tailer->lines();
    content() += numbered(4999, 5002);
    tailer->poll();
    ASSERT_EQ(tailer->lines().size(), 5000U);
    EXPECT_TRUE(std::equal(before.begin() + 2, before.end(), tailer->lines().begin()));
    EXPECT_EQ(texts(LogLines::List(tailer->lines().end() - 3, tailer->lines().end())),
              (Texts{"4999", "5000", "5001"}));
    EXPECT_EQ(announcements, 2);
}

TEST_F(LogTailerTest, ExactlyFiveThousandLinesStay) {
    content() = numbered(0, 4999);
    tailer->reload();
    const LogLine first = tailer->lines().front();
    content() += "last\n";
    tailer->poll();
    EXPECT_EQ(tailer->lines().size(), 5000U);
    EXPECT_EQ(tailer->lines().front(), first);
}

TEST_F(LogTailerTest, ClearedLinesStayAwayAndOnlyNewOnesCome) {
    content() = "a\n";
    tailer->start();
    tailer->clear();
    EXPECT_EQ(shown(), Texts{});
    EXPECT_EQ(announcements, 2);
    EXPECT_EQ(announcedOver, Texts{"a"});
    queue.advance(1s);
    EXPECT_EQ(shown(), Texts{});
    content() += "b\n";
    queue.advance(1s);
    EXPECT_EQ(shown(), Texts{"b"});
    EXPECT_EQ(content(), "a\nb\n");
}

}  // namespace
}  // namespace valdorn
