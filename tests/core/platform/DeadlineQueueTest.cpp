#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/DeadlineQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class DeadlineQueueTest : public testing::Test {
protected:
    static DeadlineQueue::TimePoint at(std::chrono::milliseconds time) {
        return DeadlineQueue::TimePoint(time);
    }

    ScheduledTask arm(std::chrono::milliseconds deadline, char letter,
                      std::optional<std::chrono::milliseconds> period = std::nullopt) {
        return queue.arm(at(deadline), period, [this, letter] { log += letter; });
    }

    void runDue(std::chrono::milliseconds now) {
        for (const MainQueue::Task& task : queue.takeDue(at(now)))
            task();
    }

    DeadlineQueue queue;
    std::string log;
};

TEST_F(DeadlineQueueTest, AnEmptyQueueHasNoDeadline) {
    EXPECT_EQ(queue.next(), std::nullopt);
    EXPECT_TRUE(queue.takeDue(at(1h)).empty());
    EXPECT_EQ(queue.size(), 0U);
}

TEST_F(DeadlineQueueTest, TheNextDeadlineIsTheEarliest) {
    const auto late = arm(20ms, 'b');
    const auto early = arm(10ms, 'a');
    EXPECT_EQ(queue.next(), at(10ms));
    runDue(10ms);
    EXPECT_EQ(queue.next(), at(20ms));
}

TEST_F(DeadlineQueueTest, TakesWhatIsDueInOrderOfDeadlineThenArming) {
    const auto c = arm(20ms, 'c');
    const auto a = arm(10ms, 'a');
    const auto d = arm(20ms, 'd');
    const auto b = arm(10ms, 'b');
    const auto x = arm(21ms, 'x');
    runDue(20ms);
    EXPECT_EQ(log, "abcd");
    EXPECT_EQ(queue.size(), 1U);
}

TEST_F(DeadlineQueueTest, AHandleThatIsMovedIntoItselfKeepsItsTask) {
    auto task = arm(10ms, 'a');
    ScheduledTask& same = task;
    task = std::move(same);
    runDue(10ms);
    EXPECT_EQ(log, "a");
}

TEST_F(DeadlineQueueTest, ATaskThatWasTakenCanStillBeCancelled) {
    auto task = arm(10ms, 'x');
    const auto due = queue.takeDue(at(10ms));
    ASSERT_EQ(due.size(), 1U);
    task.cancel();
    due[0]();
    EXPECT_EQ(log, "");
}

TEST_F(DeadlineQueueTest, ATakenPeriodCanStillBeCancelledForGood) {
    auto task = arm(10ms, 'x', 10ms);
    const auto due = queue.takeDue(at(10ms));
    task.cancel();
    due.at(0)();
    EXPECT_EQ(log, "");
    EXPECT_EQ(queue.size(), 0U);
}

TEST_F(DeadlineQueueTest, MissedPeriodsAreNotMadeUpFor) {
    const auto task = arm(10ms, 'a', 10ms);
    runDue(95ms);
    EXPECT_EQ(log, "a");
    EXPECT_EQ(queue.next(), at(105ms));
}

TEST_F(DeadlineQueueTest, CancellingMakesTheNextDeadlineNext) {
    auto early = arm(10ms, 'x');
    const auto late = arm(20ms, 'a');
    early.cancel();
    EXPECT_EQ(queue.next(), at(20ms));
}

TEST_F(DeadlineQueueTest, AOneTimeTaskIsDestroyedWhenItHasRun) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    const auto task = queue.arm(at(1ms), std::nullopt, [held = std::move(held)] {});
    const auto due = queue.takeDue(at(1ms));
    EXPECT_FALSE(watched.expired());
    due.at(0)();
    EXPECT_TRUE(watched.expired());
}

TEST(DeadlineQueueLifetimeTest, HandlesMayOutliveTheQueue) {
    auto queue = std::make_unique<DeadlineQueue>();
    auto task = queue->arm(DeadlineQueue::TimePoint(1ms), std::nullopt, [] {});
    queue.reset();
    task.cancel();
}

}  // namespace
}  // namespace valdorn
