#pragma once

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "platform/BackgroundQueue.h"

namespace valdorn {

// What every BackgroundQueue does. The fixture has:
//   BackgroundQueue& queue();
//   void finish();  // returns when all tasks have run; called last, queue() may be gone then
template <typename Fixture>
class BackgroundQueueContract : public testing::Test {
protected:
    BackgroundQueue& queue() { return fixture_.queue(); }
    void finish() { fixture_.finish(); }

private:
    Fixture fixture_;
};

TYPED_TEST_SUITE_P(BackgroundQueueContract);

TYPED_TEST_P(BackgroundQueueContract, RunsEachTaskOnce) {
    std::array<std::atomic<int>, 20> runs{};
    for (std::atomic<int>& count : runs)
        this->queue().run([&count] { ++count; });
    this->finish();
    for (const std::atomic<int>& count : runs)
        EXPECT_EQ(count, 1);
}

TYPED_TEST_P(BackgroundQueueContract, ReturnsWithoutWaitingForTheTask) {
    std::promise<void> returned;
    bool ran = false;
    this->queue().run([&, after = returned.get_future().share()] {
        after.wait();
        ran = true;
    });
    returned.set_value();
    this->finish();
    EXPECT_TRUE(ran);
}

TYPED_TEST_P(BackgroundQueueContract, ATaskMayAddTasks) {
    std::atomic<int> runs = 0;
    BackgroundQueue& queue = this->queue();
    queue.run([&] {
        ++runs;
        queue.run([&] {
            ++runs;
            queue.run([&] { ++runs; });
        });
    });
    this->finish();
    EXPECT_EQ(runs, 3);
}

TYPED_TEST_P(BackgroundQueueContract, DestroysATaskThatHasRun) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    this->queue().run([held = std::move(held)] {});
    this->finish();
    EXPECT_TRUE(watched.expired());
}

REGISTER_TYPED_TEST_SUITE_P(BackgroundQueueContract, RunsEachTaskOnce,
                            ReturnsWithoutWaitingForTheTask, ATaskMayAddTasks,
                            DestroysATaskThatHasRun);

}  // namespace valdorn
