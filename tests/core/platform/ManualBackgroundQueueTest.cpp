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

}  // namespace
}  // namespace valdorn
