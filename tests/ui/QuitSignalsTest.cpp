#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QuitSignals.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

using Handler = void (*)(int);

Handler handlerOf(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

class QuitSignalsTest : public testing::TestWithParam<int> {};

TEST_P(QuitSignalsTest, SignalIsToldOnceAndOnTheMainThread) {
    int told = 0;
    std::thread::id toldOn;
    QuitSignals signals([&] {
        ++told;
        toldOn = std::this_thread::get_id();
    });
    ASSERT_EQ(kill(getpid(), GetParam()), 0);
    ASSERT_EQ(kill(getpid(), GetParam()), 0);
    EXPECT_EQ(told, 0);
    EXPECT_TRUE(runUntil([&told] { return told > 0; }));
    ASSERT_EQ(kill(getpid(), GetParam()), 0);
    runReadyEvents();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(toldOn, std::this_thread::get_id());
}

TEST_P(QuitSignalsTest, SignalThatAnotherThreadReceivesIsTold) {
    int told = 0;
    QuitSignals signals([&told] { ++told; });
    std::thread([] { pthread_kill(pthread_self(), GetParam()); }).join();
    EXPECT_TRUE(runUntil([&told] { return told == 1; }));
}

TEST_P(QuitSignalsTest, EarlierHandlingComesBack) {
    const Handler before = handlerOf(GetParam());
    {
        const QuitSignals signals([] {});
        EXPECT_NE(handlerOf(GetParam()), before);
    }
    EXPECT_EQ(handlerOf(GetParam()), before);
}

TEST_P(QuitSignalsTest, NothingIsToldOnceDisarmed) {
    int told = 0;
    QuitSignals signals([&told] { ++told; });
    signals.disarm();
    ASSERT_EQ(kill(getpid(), GetParam()), 0);
    runReadyEvents();
    EXPECT_EQ(told, 0);
}

INSTANTIATE_TEST_SUITE_P(EachSignal, QuitSignalsTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST(QuitSignalsSessionTest, HangUpThatWasSwitchedOffStaysOff) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    {
        const QuitSignals signals([] {});
        EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    }
    (void)std::signal(SIGHUP, before);
}

TEST(QuitSignalsSessionTest, EndOfTheEventLoopIsTold) {
    int told = 0;
    QuitSignals signals([&told] { ++told; });
    QtMainQueue queue;
    queue.post([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_EQ(told, 1);
}

TEST(QuitSignalsDeathTest, ExitPastTheEventLoopIsTold) {
    EXPECT_EXIT(
        {
            const QuitSignals signals([] { (void)write(STDERR_FILENO, "told", 4); });
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^told$");
}

TEST(QuitSignalsDeathTest, ExitAfterItsTimeIsNotTold) {
    EXPECT_EXIT(
        {
            {
                const QuitSignals signals([] { (void)write(STDERR_FILENO, "told", 4); });
            }
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

}  // namespace
}  // namespace valdorn
