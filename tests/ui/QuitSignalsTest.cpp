#include <QCoreApplication>
#include <QGuiApplication>
#include <QSessionManager>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QuitSignals.h"
#include "ui/EventLoop.h"

namespace valdorn {
namespace {

using Handler = void (*)(int);

struct sigaction actionOf(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action;
}

Handler handlerOf(int signal) {
    return actionOf(signal).sa_handler;
}

// Puts back what the signals did before.
class QuitSignalsTest : public testing::TestWithParam<int> {
protected:
    // Whoever runs the tests may have switched a signal off.
    QuitSignalsTest() : before_(std::signal(GetParam(), SIG_DFL)) {}
    ~QuitSignalsTest() override { (void)std::signal(GetParam(), before_); }

private:
    const Handler before_;
};

TEST_P(QuitSignalsTest, SignalIsToldOnceAndOnTheMainThread) {
    int told = 0;
    std::thread::id toldOn;
    QuitSignals signals(
        [&] {
            ++told;
            toldOn = std::this_thread::get_id();
        },
        [] {});
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
    QuitSignals signals([&told] { ++told; }, [] {});
    std::thread([] { pthread_kill(pthread_self(), GetParam()); }).join();
    EXPECT_TRUE(runUntil([&told] { return told == 1; }));
}

TEST_P(QuitSignalsTest, SystemCallsThatASignalComesIntoGoOn) {
    const QuitSignals signals([] {}, [] {});
    EXPECT_TRUE(actionOf(GetParam()).sa_flags & SA_RESTART);
}

TEST_P(QuitSignalsTest, SignalsAfterItsTimeDoNotCutTheEndShort) {
    {
        const QuitSignals signals([] {}, [] {});
    }
    EXPECT_EQ(handlerOf(GetParam()), SIG_IGN);
}

TEST_P(QuitSignalsTest, NothingIsToldOnceDisarmed) {
    int told = 0;
    QuitSignals signals([&told] { ++told; }, [] {});
    signals.disarm();
    ASSERT_EQ(kill(getpid(), GetParam()), 0);
    runReadyEvents();
    EXPECT_EQ(told, 0);
}

INSTANTIATE_TEST_SUITE_P(EachSignal, QuitSignalsTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST(QuitSignalsSessionTest, HangUpThatWasSwitchedOffStaysOff) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    {
        const QuitSignals signals([] {}, [] {});
        EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    }
    (void)std::signal(SIGHUP, before);
}

// Which of its questions a session manager asks first, or at all, is up to it.
TEST(QuitSignalsSessionTest, SessionHearsAtEachQuestionThatThereIsNothingToRestore) {
    const QuitSignals signals([] {}, [] {});
    auto* const manager = qGuiApp->findChild<QSessionManager*>();
    ASSERT_TRUE(manager);
    for (const auto question :
         {&QGuiApplication::saveStateRequest, &QGuiApplication::commitDataRequest}) {
        manager->setRestartHint(QSessionManager::RestartIfRunning);
        (qGuiApp->*question)(*manager);
        EXPECT_EQ(manager->restartHint(), QSessionManager::RestartNever);
    }
}

TEST(QuitSignalsSessionTest, EndOfTheEventLoopIsTold) {
    int told = 0;
    QuitSignals signals([&told] { ++told; }, [] {});
    QtMainQueue queue;
    queue.post([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_EQ(told, 1);
}

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

TEST(QuitSignalsSessionTest, MessagesGoWhereTheyWentBeforeOnceItsTimeIsOver) {
    const QtMessageHandler before = qInstallMessageHandler(dropMessage);
    {
        const QuitSignals signals([] {}, [] {});
    }
    EXPECT_EQ(qInstallMessageHandler(before), &dropMessage);
}

void say(const char* text) {
    [[maybe_unused]] const auto written = write(STDERR_FILENO, text, std::strlen(text));
}

TEST(QuitSignalsDeathTest, ExitPastTheEventLoopIsToldAndEndsThere) {
    EXPECT_EXIT(
        {
            const QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
            std::exit(3);
        },
        testing::ExitedWithCode(EXIT_FAILURE), "^quit let go$");
}

TEST(QuitSignalsDeathTest, ExitAfterOurOwnQuitOnlyLetsGo) {
    EXPECT_EXIT(
        {
            QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
            signals.disarm();
            std::exit(3);
        },
        testing::ExitedWithCode(EXIT_FAILURE), "^let go$");
}

void warnOfWayland(const char* text) {
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& said) { say(qPrintable(said)); });
    const QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
    qWarning("%s", text);
    std::_Exit(3);
}

TEST(QuitSignalsDeathTest, LossOfTheWaylandCompositorIsToldAndEndsThere) {
    EXPECT_EXIT(warnOfWayland("The Wayland connection broke. "),
                testing::ExitedWithCode(EXIT_FAILURE),
                "^The Wayland connection broke. quit let go$");
    EXPECT_EXIT(warnOfWayland("The Wayland connection experienced a fatal error: no "),
                testing::ExitedWithCode(EXIT_FAILURE), "error: no quit let go$");
}

void warnOfWaylandOnAnotherThread() {
    qInstallMessageHandler(dropMessage);
    const QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
    std::thread([] { qWarning("The Wayland connection broke."); }).detach();
    runUntil([] { return false; });
    std::_Exit(3);
}

TEST(QuitSignalsDeathTest, LossThatAnotherThreadNoticesIsToldOnTheMainThread) {
    EXPECT_EXIT(warnOfWaylandOnAnotherThread(), testing::ExitedWithCode(EXIT_FAILURE),
                "^quit let go$");
}

std::atomic<pid_t> farewellThread{0};

// Past all that it has to do before it waits for the main thread.
bool isFarewellThreadAsleep() {
    std::ifstream status("/proc/self/task/" + std::to_string(farewellThread) + "/stat");
    std::string fields;
    std::getline(status, fields);
    return farewellThread != 0 && fields.find(") S ") != std::string::npos;
}

void endWhileAnotherThreadSaysFarewell() {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {
        farewellThread = static_cast<pid_t>(syscall(SYS_gettid));
    });
    {
        const QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
        std::thread([] { qWarning("The Wayland connection broke."); }).detach();
        while (!isFarewellThreadAsleep())
            std::this_thread::yield();
    }
    std::_Exit(3);
}

TEST(QuitSignalsDeathTest, LossThatIsStillToBeToldAtTheEndOfItsTimeIsTold) {
    EXPECT_EXIT(endWhileAnotherThreadSaysFarewell(), testing::ExitedWithCode(EXIT_FAILURE),
                "^quit let go$");
}

TEST(QuitSignalsDeathTest, OtherWarningsAreOnlyPassedOn) {
    EXPECT_EXIT(warnOfWayland("No such cursor"), testing::ExitedWithCode(3), "^No such cursor$");
}

TEST(QuitSignalsDeathTest, ExitAfterItsTimeIsNotTold) {
    EXPECT_EXIT(
        {
            {
                const QuitSignals signals([] { say("quit "); }, [] { say("let go"); });
            }
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

}  // namespace
}  // namespace valdorn
