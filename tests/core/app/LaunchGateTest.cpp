#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "app/LaunchGate.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class LaunchGateTest : public testing::Test {
protected:
    void request(const std::string& name) {
        gate.request([this, name] { log += name + " "; });
    }

    VirtualMainQueue queue;
    std::string log;
    std::function<void()> duringLaunch = [] {};
    LaunchGate gate{queue, [this] {
                        log += "launched ";
                        std::exchange(duringLaunch, [] {})();
                    }};
};

TEST_F(LaunchGateTest, LaunchesAtOnceWhenAllIsThere) {
    queue.advance(1h);
    EXPECT_EQ(log, "");
    gate.ready();
    EXPECT_EQ(log, "launched ");
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LaunchGateTest, RequestsBeforeTheLaunchAreKeptForItInOrder) {
    request("first");
    request("second");
    EXPECT_EQ(log, "");
    gate.ready();
    EXPECT_EQ(log, "launched first second ");
}

TEST_F(LaunchGateTest, RequestsAfterTheLaunchRunAtOnce) {
    gate.ready();
    request("now");
    EXPECT_EQ(log, "launched now ");
}

TEST_F(LaunchGateTest, AwaitedRequestLaunches) {
    gate.awaitRequest();
    gate.ready();
    EXPECT_EQ(log, "");
    request("awaited");
    EXPECT_EQ(log, "launched awaited ");
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LaunchGateTest, AwaitedRequestThatIsThereAlreadyCounts) {
    gate.awaitRequest();
    request("early");
    EXPECT_EQ(log, "");
    gate.ready();
    EXPECT_EQ(log, "launched early ");
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(LaunchGateTest, WhoeverWasStartedForNothingLaunchesAfterAWhile) {
    gate.awaitRequest();
    gate.ready();
    queue.advance(1999ms);
    EXPECT_EQ(log, "");
    queue.advance(1ms);
    EXPECT_EQ(log, "launched ");
    request("late");
    EXPECT_EQ(log, "launched late ");
}

TEST_F(LaunchGateTest, NothingIsLaunchedOrRunOnceItIsClosed) {
    request("before");
    gate.close();
    gate.ready();
    request("after");
    EXPECT_EQ(log, "");
}

TEST_F(LaunchGateTest, ClosingEndsTheWaiting) {
    gate.awaitRequest();
    gate.ready();
    gate.close();
    EXPECT_EQ(queue.pending(), 0U);
    request("late");
    EXPECT_EQ(log, "");
}

TEST_F(LaunchGateTest, RequestThatClosesIsTheLast) {
    gate.request([this] {
        log += "closes ";
        gate.close();
    });
    request("next");
    gate.ready();
    EXPECT_EQ(log, "launched closes ");
}

TEST_F(LaunchGateTest, WhatTheLaunchItselfAsksForRunsAtOnce) {
    duringLaunch = [this] { request("own"); };
    gate.awaitRequest();
    gate.ready();
    queue.advance(2s);
    EXPECT_EQ(log, "launched own ");
}

TEST_F(LaunchGateTest, NothingRunsAfterALaunchThatCloses) {
    duringLaunch = [this] { gate.close(); };
    request("before");
    gate.ready();
    request("after");
    EXPECT_EQ(log, "launched ");
}

TEST_F(LaunchGateTest, NothingIsHeldOnceItHasRunOrBeenDropped) {
    const auto held = std::make_shared<int>();
    const auto ask = [held](LaunchGate& asked) { asked.request([held] {}); };
    const auto users = held.use_count();
    LaunchGate launching(queue, [] {});
    ask(launching);
    EXPECT_EQ(held.use_count(), users + 1);
    launching.ready();
    EXPECT_EQ(held.use_count(), users);
    ask(gate);
    gate.close();
    EXPECT_EQ(held.use_count(), users);
    ask(gate);
    EXPECT_EQ(held.use_count(), users);
}

}  // namespace
}  // namespace valdorn
