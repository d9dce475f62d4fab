#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/MainQueue.h"

namespace valdorn {

// What every MainQueue does, seen from the main thread. The fixture has:
//   MainQueue& queue();
//   void runFor(std::chrono::milliseconds);  // runs tasks until at least so much time has passed
// and its destruction destroys the queue.
template <typename Fixture>
class MainQueueContract : public testing::Test {
protected:
    using Milliseconds = std::chrono::milliseconds;

    MainQueue& queue() { return fixture_->queue(); }
    void runFor(Milliseconds time) { fixture_->runFor(time); }
    void destroyQueue() { fixture_.reset(); }

    // Runs tasks until the condition holds. Patience passes only when a test fails.
    bool runUntil(const std::function<bool()>& condition) {
        for (int rounds = 0; rounds < 1000 && !condition(); ++rounds)
            runFor(Milliseconds{5});
        return condition();
    }

    // A task that adds a letter to `log`.
    MainQueue::Task note(char letter) {
        return [this, letter] { log += letter; };
    }

    std::string log;

private:
    std::unique_ptr<Fixture> fixture_ = std::make_unique<Fixture>();
};

TYPED_TEST_SUITE_P(MainQueueContract);

using namespace std::chrono_literals;

TYPED_TEST_P(MainQueueContract, RunsTasksInPostingOrder) {
    for (const char letter : std::string("abcdef"))
        this->queue().post(this->note(letter));
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 6; }));
    EXPECT_EQ(this->log, "abcdef");
}

TYPED_TEST_P(MainQueueContract, NeverRunsATaskBeforePostHasReturned) {
    this->queue().post(this->note('a'));
    EXPECT_EQ(this->log, "");
    this->queue().post([this] {
        this->queue().post(this->note('c'));
        this->log += 'b';
    });
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 3; }));
    EXPECT_EQ(this->log, "abc");
}

TYPED_TEST_P(MainQueueContract, ATaskPostedByATaskRunsAfterThosePostedBefore) {
    this->queue().post([this] { this->queue().post(this->note('c')); });
    this->queue().post(this->note('a'));
    this->queue().post(this->note('b'));
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 3; }));
    EXPECT_EQ(this->log, "abc");
}

TYPED_TEST_P(MainQueueContract, RunsTasksOfOtherThreadsOnTheMainThread) {
    std::vector<std::thread::id> threads;
    std::thread other([this, &threads] {
        for (int i = 0; i < 100; ++i)
            this->queue().post([&threads] { threads.push_back(std::this_thread::get_id()); });
    });
    this->runFor(1ms);  // while the other thread still posts, as far as it goes
    other.join();
    EXPECT_TRUE(this->runUntil([&threads] { return threads.size() == 100; }));
    EXPECT_EQ(threads, std::vector(100, std::this_thread::get_id()));
}

TYPED_TEST_P(MainQueueContract, ABurstLosesNothingAndKeepsItsOrder) {
    std::vector<int> ran;
    std::vector<int> posted;
    for (int i = 0; i < 5000; ++i) {
        posted.push_back(i);
        this->queue().post([&ran, i] { ran.push_back(i); });
    }
    EXPECT_TRUE(this->runUntil([&ran] { return ran.size() >= 5000; }));
    EXPECT_EQ(ran, posted);
}

TYPED_TEST_P(MainQueueContract, DestroysATaskThatHasRun) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    this->queue().post([held = std::move(held)] {});
    EXPECT_TRUE(this->runUntil([&watched] { return watched.expired(); }));
}

TYPED_TEST_P(MainQueueContract, ADelayedTaskRunsOnceAndNotEarly) {
    const auto armed = this->queue().now();
    MainQueue::TimePoint ran;
    const ScheduledTask task = this->queue().after(30ms, [&] {
        this->log += 'a';
        ran = this->queue().now();
    });
    EXPECT_EQ(this->log, "");
    EXPECT_TRUE(this->runUntil([this] { return !this->log.empty(); }));
    EXPECT_GE(ran - armed, 30ms);
    this->runFor(60ms);
    EXPECT_EQ(this->log, "a");
}

TYPED_TEST_P(MainQueueContract, ADelayOfZeroOrLessIsDueAtOnceButNotInsideTheCall) {
    const ScheduledTask zero = this->queue().after(0ms, this->note('a'));
    const ScheduledTask less = this->queue().after(-5ms, this->note('b'));
    EXPECT_EQ(this->log, "");
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 2; }));
}

TYPED_TEST_P(MainQueueContract, ShorterDelaysRunFirst) {
    const ScheduledTask last = this->queue().after(40ms, this->note('c'));
    const ScheduledTask first = this->queue().after(5ms, this->note('a'));
    const ScheduledTask middle = this->queue().after(20ms, this->note('b'));
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 3; }));
    EXPECT_EQ(this->log, "abc");
}

TYPED_TEST_P(MainQueueContract, EqualDelaysRunInArmingOrder) {
    std::vector<ScheduledTask> tasks;
    for (const char letter : std::string("abcdef"))
        tasks.push_back(this->queue().after(10ms, this->note(letter)));
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() == 6; }));
    EXPECT_EQ(this->log, "abcdef");
}

TYPED_TEST_P(MainQueueContract, DroppingTheHandleCancels) {
    { const ScheduledTask dropped = this->queue().after(5ms, this->note('x')); }
    this->runFor(30ms);
    EXPECT_EQ(this->log, "");
}

TYPED_TEST_P(MainQueueContract, CancellingDestroysTheTaskAtOnceAndMayBeRepeated) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    ScheduledTask task =
        this->queue().after(5ms, [this, held = std::move(held)] { this->log += 'x'; });
    task.cancel();
    EXPECT_TRUE(watched.expired());
    task.cancel();
    this->runFor(30ms);
    EXPECT_EQ(this->log, "");
}

TYPED_TEST_P(MainQueueContract, CancellingAfterTheRunIsHarmless) {
    ScheduledTask task = this->queue().after(1ms, this->note('a'));
    EXPECT_TRUE(this->runUntil([this] { return !this->log.empty(); }));
    task.cancel();
    EXPECT_EQ(this->log, "a");
}

TYPED_TEST_P(MainQueueContract, ADueTaskCanBeCancelledUntilItRuns) {
    ScheduledTask second;
    const ScheduledTask first = this->queue().after(10ms, [&] {
        this->log += 'a';
        second.cancel();
    });
    second = this->queue().after(10ms, this->note('x'));
    EXPECT_TRUE(this->runUntil([this] { return !this->log.empty(); }));
    this->runFor(30ms);
    EXPECT_EQ(this->log, "a");
}

TYPED_TEST_P(MainQueueContract, ReplacingAHandleCancelsTheOldTask) {
    ScheduledTask task = this->queue().after(5ms, this->note('x'));
    task = this->queue().after(10ms, this->note('a'));
    this->runFor(40ms);
    EXPECT_TRUE(this->runUntil([this] { return !this->log.empty(); }));
    EXPECT_EQ(this->log, "a");
}

TYPED_TEST_P(MainQueueContract, ADetachedTaskRunsWithoutAHandle) {
    this->queue().after(5ms, this->note('a')).detach();
    EXPECT_TRUE(this->runUntil([this] { return this->log == "a"; }));
}

TYPED_TEST_P(MainQueueContract, ATaskMayDropItsOwnHandle) {
    ScheduledTask task;
    task = this->queue().after(1ms, [&] {
        task = ScheduledTask();
        this->log += 'a';
    });
    EXPECT_TRUE(this->runUntil([this] { return this->log == "a"; }));
}

TYPED_TEST_P(MainQueueContract, ARepeatingTaskRunsUntilItsHandleIsDropped) {
    const auto armed = this->queue().now();
    ScheduledTask task = this->queue().every(5ms, this->note('a'));
    EXPECT_TRUE(this->runUntil([this] { return this->log.size() >= 3; }));
    EXPECT_GE(this->queue().now() - armed, 15ms);
    task = ScheduledTask();
    const std::string before = this->log;
    this->runFor(30ms);
    EXPECT_EQ(this->log, before);
}

TYPED_TEST_P(MainQueueContract, ARepeatingTaskMayEndItself) {
    ScheduledTask task;
    task = this->queue().every(2ms, [&] {
        task.cancel();
        this->log += 'a';
    });
    EXPECT_TRUE(this->runUntil([this] { return !this->log.empty(); }));
    this->runFor(20ms);
    EXPECT_EQ(this->log, "a");
}

TYPED_TEST_P(MainQueueContract, TimePassesWhileNothingIsArmed) {
    const auto before = this->queue().now();
    this->runFor(20ms);
    EXPECT_GE(this->queue().now() - before, 20ms);
}

TYPED_TEST_P(MainQueueContract, DestructionDropsTasksUnrun) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    this->queue().post([this, held] { this->log += 'x'; });
    this->queue().after(5ms, [this, held] { this->log += 'x'; }).detach();
    this->queue().every(5ms, [this, held = std::move(held)] { this->log += 'x'; }).detach();
    this->destroyQueue();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(this->log, "");
}

TYPED_TEST_P(MainQueueContract, AHandleMayOutliveTheQueue) {
    ScheduledTask cancelled = this->queue().after(5ms, this->note('x'));
    const ScheduledTask dropped = this->queue().every(5ms, this->note('x'));
    this->destroyQueue();
    cancelled.cancel();
    EXPECT_EQ(this->log, "");
}

REGISTER_TYPED_TEST_SUITE_P(
    MainQueueContract, RunsTasksInPostingOrder, NeverRunsATaskBeforePostHasReturned,
    ATaskPostedByATaskRunsAfterThosePostedBefore, RunsTasksOfOtherThreadsOnTheMainThread,
    ABurstLosesNothingAndKeepsItsOrder, DestroysATaskThatHasRun, ADelayedTaskRunsOnceAndNotEarly,
    ADelayOfZeroOrLessIsDueAtOnceButNotInsideTheCall, ShorterDelaysRunFirst,
    EqualDelaysRunInArmingOrder, DroppingTheHandleCancels,
    CancellingDestroysTheTaskAtOnceAndMayBeRepeated, CancellingAfterTheRunIsHarmless,
    ADueTaskCanBeCancelledUntilItRuns, ReplacingAHandleCancelsTheOldTask,
    ADetachedTaskRunsWithoutAHandle, ATaskMayDropItsOwnHandle,
    ARepeatingTaskRunsUntilItsHandleIsDropped, ARepeatingTaskMayEndItself,
    TimePassesWhileNothingIsArmed, DestructionDropsTasksUnrun, AHandleMayOutliveTheQueue);

}  // namespace valdorn
