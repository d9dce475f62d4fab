#include <future>
#include <memory>
#include <system_error>

#include <gtest/gtest.h>

#include "contracts/BackgroundQueueContract.h"
#include "platform/posix/ThreadBackgroundQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

// Long enough for any machine; it passes only when a test fails.
constexpr auto patience = 20s;

class ThreadFixture {
public:
    BackgroundQueue& queue() { return *queue_; }
    void finish() { queue_.reset(); }

private:
    std::unique_ptr<ThreadBackgroundQueue> queue_ = std::make_unique<ThreadBackgroundQueue>();
};

INSTANTIATE_TYPED_TEST_SUITE_P(Thread, BackgroundQueueContract, ThreadFixture);

TEST(ThreadBackgroundQueueTest, ATaskThatDoesNotEndDelaysNoOther) {
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    ThreadBackgroundQueue queue;
    for (int i = 0; i < 3; ++i)
        queue.run([released] { released.wait(); });
    std::promise<void> ran;
    queue.run([&ran] { ran.set_value(); });
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
    release.set_value();
}

TEST(ThreadBackgroundQueueTest, DestructionWaitsForWhatRuns) {
    std::promise<void> started;
    std::promise<void> release;
    bool ended = false;
    auto queue = std::make_unique<ThreadBackgroundQueue>();
    queue->run([&] {
        started.set_value();
        release.get_future().wait();
        ended = true;
    });
    started.get_future().wait();
    std::thread releaser([&release] { release.set_value(); });
    queue.reset();
    EXPECT_TRUE(ended);
    releaser.join();
}

TEST(ThreadBackgroundQueueTest, ATaskIsDestroyedOnTheThreadThatRanIt) {
    std::thread::id ranOn;
    std::thread::id destroyedOn;
    {
        ThreadBackgroundQueue queue;
        const auto noteThread = [&destroyedOn](int* owned) {
            destroyedOn = std::this_thread::get_id();
            delete owned;
        };
        std::shared_ptr<int> held(new int(0), noteThread);
        queue.run([&ranOn, held = std::move(held)] { ranOn = std::this_thread::get_id(); });
    }
    EXPECT_EQ(destroyedOn, ranOn);
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST(ThreadBackgroundQueueTest, TheDestructionOfATaskMayAddTasks) {
    std::promise<void> ran;
    ThreadBackgroundQueue queue;
    std::shared_ptr<void> held(nullptr, [&](void*) { queue.run([&ran] { ran.set_value(); }); });
    queue.run([held = std::move(held)] {});
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
}

TEST(ThreadBackgroundQueueTest, EndedThreadsDoNotPileUp) {
    std::promise<void>* ended = nullptr;
    ThreadBackgroundQueue queue([&ended](std::function<void()> body) {
        return std::thread([body = std::move(body), announce = ended] {
            body();
            announce->set_value();
        });
    });
    for (int i = 0; i < 20; ++i) {
        std::promise<void> next;
        ended = &next;
        queue.run([] {});
        EXPECT_EQ(queue.threads(), 1U);
        next.get_future().wait();
    }
}

// Makes threads, or refuses them while told to.
class StingyMaker {
public:
    bool refuses = false;
    int refusals = 0;

    ThreadBackgroundQueue::ThreadMaker maker() {
        return [this](std::function<void()> body) {
            if (!refuses)
                return std::thread(std::move(body));
            ++refusals;
            throw std::system_error(EAGAIN, std::generic_category());
        };
    }
};

TEST(ThreadBackgroundQueueTest, ATaskWithoutAThreadGetsOneAtTheNextRun) {
    StingyMaker system{.refuses = true};
    ThreadBackgroundQueue queue(system.maker());
    std::promise<void> first;
    std::promise<void> second;
    // Each ends only after both have run: two threads are needed.
    const auto firstRan = first.get_future().share();
    const auto secondRan = second.get_future().share();
    queue.run([&, secondRan] {
        first.set_value();
        EXPECT_EQ(secondRan.wait_for(patience), std::future_status::ready);
    });
    EXPECT_EQ(system.refusals, 1);
    system.refuses = false;
    queue.run([&, firstRan] {
        second.set_value();
        EXPECT_EQ(firstRan.wait_for(patience), std::future_status::ready);
    });
    EXPECT_EQ(firstRan.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(secondRan.wait_for(patience), std::future_status::ready);
}

TEST(ThreadBackgroundQueueTest, ATaskWithoutAThreadRunsOnTheNextThatEnds) {
    StingyMaker system;
    std::promise<void> release;
    std::promise<void> ran;
    ThreadBackgroundQueue queue(system.maker());
    queue.run([&release] { release.get_future().wait(); });
    system.refuses = true;
    queue.run([&ran] { ran.set_value(); });
    EXPECT_EQ(system.refusals, 1);
    release.set_value();
    EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
}

TEST(ThreadBackgroundQueueTest, DestructionItselfRunsWhatNeverGotAThread) {
    StingyMaker system{.refuses = true};
    int runs = 0;
    {
        ThreadBackgroundQueue queue(system.maker());
        queue.run([&] {
            ++runs;
            queue.run([&runs] { ++runs; });
        });
        EXPECT_EQ(runs, 0);
        EXPECT_EQ(queue.threads(), 0U);
    }
    EXPECT_EQ(runs, 2);
}

}  // namespace
}  // namespace valdorn
