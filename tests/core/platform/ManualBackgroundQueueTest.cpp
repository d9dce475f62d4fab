#include <string>

#include <gtest/gtest.h>

#include "contracts/BackgroundQueueContract.h"
#include "support/ManualBackgroundQueue.h"

namespace valdorn {
namespace {

class ManualFixture {
public:
    BackgroundQueue& queue() { return queue_; }
    void finish() { queue_.runAll(); }

private:
    ManualBackgroundQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Manual, BackgroundQueueContract, ManualFixture);

TEST(ManualBackgroundQueueTest, RunsTheOldestTaskWhenTold) {
    ManualBackgroundQueue queue;
    std::string log;
    queue.run([&log] { log += 'a'; });
    queue.run([&log] { log += 'b'; });
    EXPECT_EQ(queue.count(), 2U);
    EXPECT_EQ(log, "");
    EXPECT_TRUE(queue.runNext());
    EXPECT_EQ(log, "a");
    EXPECT_EQ(queue.count(), 1U);
    EXPECT_TRUE(queue.runNext());
    EXPECT_FALSE(queue.runNext());
    EXPECT_EQ(log, "ab");
}

TEST(ManualBackgroundQueueTest, RunsAnyTaskBeforeTheOthers) {
    ManualBackgroundQueue queue;
    std::string log;
    for (const char letter : {'a', 'b', 'c'})
        queue.run([&log, letter] { log += letter; });
    queue.runAt(1);
    EXPECT_EQ(log, "b");
    queue.runAll();
    EXPECT_EQ(log, "bac");
}

}  // namespace
}  // namespace valdorn
