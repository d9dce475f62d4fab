#include <QEvent>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QWidget>
#include <array>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "contracts/MainQueueContract.h"
#include "platform/qt/QtMainQueue.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

// The shared suite, on real time.
class RealMainQueue {
public:
    MainQueue& queue() { return queue_; }
    void runFor(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        runUntil([end] { return std::chrono::steady_clock::now() >= end; });
    }

private:
    QtMainQueue queue_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MainQueueContract, RealMainQueue);

// Counts the events that reach an object.
class EventCounter : public QObject {
public:
    explicit EventCounter(QObject& watched) { watched.installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        count += event->type() >= QEvent::User ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

// Busies the main thread the way a task does, without giving the event loop a turn.
void workFor(std::chrono::microseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
    }
}

// A task that posts itself again for ever: the longest burst there is.
class EndlessBurst {
public:
    explicit EndlessBurst(QtMainQueue& queue) : queue_(queue) { next(); }
    ~EndlessBurst() {
        running_ = false;
        runReadyEvents();
    }
    int runs = 0;

private:
    void next() {
        queue_.post([this] {
            ++runs;
            workFor(50us);
            if (running_)
                next();
        });
    }

    QtMainQueue& queue_;
    bool running_ = true;
};

bool hasRunningTimer(const QtMainQueue& queue) {
    const auto timers = queue.findChildren<QTimer*>();
    return std::any_of(timers.begin(), timers.end(),
                       [](QTimer* timer) { return timer->isActive(); });
}

TEST(QtMainQueueTest, BurstCostsOneWakeUp) {
    QtMainQueue queue;
    EventCounter wakeUps(queue);
    int runs = 0;
    for (int i = 0; i < 1000; ++i)
        queue.post([&runs] { ++runs; });
    runReadyEvents();
    EXPECT_EQ(runs, 1000);
    EXPECT_EQ(wakeUps.count, 1);
}

TEST(QtMainQueueTest, IdleQueueIsNotWokenUp) {
    QtMainQueue queue;
    queue.post([] {});
    runReadyEvents();
    EventCounter wakeUps(queue);
    runReadyEvents();
    EXPECT_EQ(wakeUps.count, 0);
}

TEST(QtMainQueueTest, WakesUpAgainAfterItWentIdle) {
    QtMainQueue queue;
    int runs = 0;
    queue.post([&runs] { ++runs; });
    runReadyEvents();
    queue.post([&runs] { ++runs; });
    runReadyEvents();
    EXPECT_EQ(runs, 2);
}

TEST(QtMainQueueTest, ManyThreadsPostAndEachKeepsItsOrder) {
    QtMainQueue queue;
    constexpr int perThread = 500;
    std::array<std::vector<int>, 4> seen;
    std::array<std::thread, 4> posters;
    for (std::size_t poster = 0; poster < posters.size(); ++poster) {
        posters[poster] = std::thread([&queue, &list = seen[poster]] {
            for (int i = 0; i < perThread; ++i)
                queue.post([&list, i] { list.push_back(i); });
        });
    }
    const auto done = [](const std::vector<int>& list) { return list.size() == perThread; };
    EXPECT_TRUE(runUntil([&] { return std::all_of(seen.begin(), seen.end(), done); }));
    for (std::thread& poster : posters)
        poster.join();
    for (const std::vector<int>& list : seen)
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

TEST(QtMainQueueTest, PostFromAnotherThreadWakesASleepingEventLoop) {
    QtMainQueue queue;
    runReadyEvents();
    bool ran = false;
    std::thread poster([&] { queue.post([&ran] { ran = true; }); });
    EXPECT_TRUE(runUntil([&ran] { return ran; }));
    poster.join();
}

TEST(QtMainQueueTest, EndlessBurstLetsTimersRun) {
    QtMainQueue queue;
    EndlessBurst burst(queue);
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&ticks] { ++ticks; });
    timer.start(0);
    EXPECT_TRUE(runUntil([&ticks] { return ticks >= 3; }));
}

TEST(QtMainQueueTest, EndlessBurstLetsInputBeRead) {
    QtMainQueue queue;
    EndlessBurst burst(queue);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    QSocketNotifier notifier(ends[0], QSocketNotifier::Read);
    int reads = 0;
    QObject::connect(&notifier, &QSocketNotifier::activated, [&reads] { ++reads; });
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    EXPECT_TRUE(runUntil([&reads] { return reads >= 3; }));
    close(ends[0]);
    close(ends[1]);
}

TEST(QtMainQueueTest, EndlessBurstLetsWindowsBePainted) {
    class Canvas : public QWidget {
    public:
        int paints = 0;

    protected:
        void paintEvent(QPaintEvent*) override {
            ++paints;
            update();
        }
    };
    QtMainQueue queue;
    Canvas canvas;
    canvas.show();
    EndlessBurst burst(queue);
    EXPECT_TRUE(runUntil([&canvas] { return canvas.paints >= 5; }));
}

TEST(QtMainQueueTest, OneTurnOfABurstIsShort) {
    QtMainQueue queue;
    EndlessBurst burst(queue);
    EventCounter turns(queue);
    EXPECT_TRUE(runUntil([&turns] { return turns.count >= 10; }));
    // 8 ms a turn and 50 us a task: 160 tasks at most, and some room for the clock.
    EXPECT_LE(burst.runs, 11 * 170);
}

TEST(QtMainQueueTest, BurstKeepsItsOrderAcrossTurns) {
    QtMainQueue queue;
    std::vector<int> order;
    for (int i = 0; i < 400; ++i) {
        queue.post([&order, i] {
            order.push_back(i);
            workFor(100us);
        });
    }
    EXPECT_TRUE(runUntil([&order] { return order.size() == 400; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(QtMainQueueTest, DueTaskJoinsARunningBurst) {
    QtMainQueue queue;
    EndlessBurst burst(queue);
    bool ran = false;
    const auto task = queue.after(1ms, [&ran] { ran = true; });
    EXPECT_TRUE(runUntil([&ran] { return ran; }));
}

TEST(QtMainQueueTest, TimerRestsWhenNothingIsArmed) {
    QtMainQueue queue;
    EXPECT_FALSE(hasRunningTimer(queue));
    bool ran = false;
    const auto task = queue.after(1ms, [&ran] { ran = true; });
    EXPECT_TRUE(hasRunningTimer(queue));
    EXPECT_TRUE(runUntil([&ran] { return ran; }));
    EXPECT_FALSE(hasRunningTimer(queue));
}

TEST(QtMainQueueTest, TimerRestsWhenTheLastTaskIsCancelled) {
    QtMainQueue queue;
    auto soon = queue.after(1h, [] {});
    auto late = queue.every(2h, [] {});
    soon.cancel();
    EXPECT_TRUE(hasRunningTimer(queue));
    late = ScheduledTask();
    EXPECT_FALSE(hasRunningTimer(queue));
}

TEST(QtMainQueueTest, DelayOfYearsIsKept) {
    QtMainQueue queue;
    bool ran = false;
    const auto task = queue.after(std::chrono::hours{24 * 365 * 10}, [&ran] { ran = true; });
    runReadyEvents();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(hasRunningTimer(queue));
}

TEST(QtMainQueueTest, EventLoopInsideATaskDoesNotRunOtherTasks) {
    QtMainQueue queue;
    std::vector<int> order;
    queue.post([&] {
        queue.post([&order] { order.push_back(2); });
        runReadyEvents();
        order.push_back(1);
    });
    runReadyEvents();
    EXPECT_TRUE(runUntil([&order] { return order.size() == 2; }));
    EXPECT_EQ(order, (std::vector{1, 2}));
}

}  // namespace
}  // namespace valdorn
