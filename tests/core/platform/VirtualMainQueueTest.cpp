#include <string>

#include <gtest/gtest.h>

#include "contracts/MainQueueContract.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class VirtualFixture {
public:
    MainQueue& queue() { return queue_; }
    void runFor(std::chrono::milliseconds time) { queue_.advance(time); }

private:
    VirtualMainQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, MainQueueContract, VirtualFixture);

class VirtualMainQueueTest : public testing::Test {
protected:
    MainQueue::Task note(char letter) {
        return [this, letter] { log += letter; };
    }

    VirtualMainQueue queue;
    std::string log;
};

TEST_F(VirtualMainQueueTest, RunningWhatIsPostedLetsTimeStandStill) {
    const auto before = queue.now();
    const auto later = queue.after(1ms, note('x'));
    queue.post(note('a'));
    queue.runPosted();
    EXPECT_EQ(log, "a");
    EXPECT_EQ(queue.now(), before);
}

TEST_F(VirtualMainQueueTest, ATaskSeesTheTimeOfItsOwnDeadline) {
    const auto start = queue.now();
    MainQueue::TimePoint seen;
    const auto task = queue.after(4s, [&] { seen = queue.now(); });
    queue.advance(10s);
    EXPECT_EQ(seen, start + 4s);
    EXPECT_EQ(queue.now(), start + 10s);
}

TEST_F(VirtualMainQueueTest, AdvancingRunsWhatIsDueAtTheVeryEnd) {
    const auto task = queue.after(4s, note('a'));
    queue.advance(3999ms);
    EXPECT_EQ(log, "");
    queue.advance(1ms);
    EXPECT_EQ(log, "a");
}

TEST_F(VirtualMainQueueTest, AdvancingFollowsTasksThatArmTasks) {
    ScheduledTask second;
    const auto first = queue.after(1s, [&] { second = queue.after(1s, note('b')); });
    queue.advance(2s);
    EXPECT_EQ(log, "b");
}

TEST_F(VirtualMainQueueTest, ADelayedTaskJoinsTheEndOfTheQueue) {
    queue.post(note('a'));
    const auto due = queue.after(0ms, note('c'));
    queue.post(note('b'));
    queue.runPosted();
    EXPECT_EQ(log, "abc");
}

TEST_F(VirtualMainQueueTest, CountsEveryPeriodThatPasses) {
    const auto task = queue.every(100ms, note('a'));
    queue.advance(1s);
    EXPECT_EQ(log.size(), 10U);
}

TEST_F(VirtualMainQueueTest, WhatFellDueDuringAStallRunsAfterItInOrderOfDeadline) {
    const auto later = queue.after(20ms, note('b'));
    const auto earlier = queue.after(10ms, note('a'));
    queue.stall(30ms);
    EXPECT_EQ(log, "");
    queue.runPosted();
    EXPECT_EQ(log, "ab");
}

TEST_F(VirtualMainQueueTest, PendingCountsPostedAndArmedTasks) {
    EXPECT_EQ(queue.pending(), 0U);
    queue.post(note('a'));
    auto task = queue.after(1s, note('b'));
    EXPECT_EQ(queue.pending(), 2U);
    EXPECT_EQ(queue.armed(), 1U);
    queue.runPosted();
    EXPECT_EQ(queue.pending(), 1U);
    task.cancel();
    EXPECT_EQ(queue.pending(), 0U);
}

}  // namespace
}  // namespace valdorn
