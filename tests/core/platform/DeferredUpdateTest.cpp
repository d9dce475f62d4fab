#include <memory>

#include <gtest/gtest.h>

#include "platform/DeferredUpdate.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

class DeferredUpdateTest : public testing::Test {
protected:
    VirtualMainQueue queue;
    int runs = 0;
    std::unique_ptr<DeferredUpdate> update =
        std::make_unique<DeferredUpdate>(queue, [this] { ++runs; });
};

TEST_F(DeferredUpdateTest, RunsAfterTheRequestHasReturned) {
    update->request();
    EXPECT_EQ(runs, 0);
    queue.runPosted();
    EXPECT_EQ(runs, 1);
}

TEST_F(DeferredUpdateTest, ManyRequestsOfOneTurnRunItOnce) {
    update->request();
    update->request();
    EXPECT_EQ(queue.pending(), 1U);
    queue.runPosted();
    EXPECT_EQ(runs, 1);
}

TEST_F(DeferredUpdateTest, RunsAgainForALaterRequest) {
    update->request();
    queue.runPosted();
    update->request();
    queue.runPosted();
    EXPECT_EQ(runs, 2);
}

TEST_F(DeferredUpdateTest, DroppedItDoesNotRun) {
    update->request();
    update.reset();
    queue.runPosted();
    EXPECT_EQ(runs, 0);
}

TEST_F(DeferredUpdateTest, ActionMayRequestAndDropIt) {
    update = std::make_unique<DeferredUpdate>(queue, [this] {
        if (++runs == 1)
            update->request();
        else
            update.reset();
    });
    update->request();
    queue.runPosted();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(update, nullptr);
}

}  // namespace
}  // namespace valdorn
