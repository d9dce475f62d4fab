#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "app/TrayHostSearch.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

class TrayHostSearchTest : public testing::Test {
protected:
    void setNotifier(bool there) {
        notifier_ = there;
        search.hostsChanged();
    }
    void setXembed(bool there) {
        xembed_ = there;
        search.hostsChanged();
    }

    VirtualMainQueue queue;
    std::string log;
    TrayHostSearch search{
        queue,
        {[this] { return notifier_; }, [this] { return xembed_; }},
        {[this](TrayHost host) { log += host == TrayHost::notifier ? "notifier " : "xembed "; },
         [this] {
             log += "missing ";
             onMissing();
         },
         [this] { log += "appeared "; }}};
    std::function<void()> onMissing = [] {};

    bool notifier_ = false;
    bool xembed_ = false;
};

TEST_F(TrayHostSearchTest, NothingIsToldBeforeTheStart) {
    setNotifier(true);
    queue.advance(1h);
    EXPECT_EQ(log, "");
}

TEST_F(TrayHostSearchTest, NotifierHostIsTakenAtOnceAndNoTimerStays) {
    setNotifier(true);
    search.start();
    EXPECT_EQ(log, "notifier ");
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(TrayHostSearchTest, NotifierHostThatComesWhileWaitingIsTakenAtOnce) {
    search.start();
    queue.advance(29s);
    setNotifier(true);
    EXPECT_EQ(log, "notifier ");
    queue.advance(1h);
    EXPECT_EQ(log, "notifier ");
}

TEST_F(TrayHostSearchTest, HostIsMissingAfterTheWaitingTimeAndNotEarlier) {
    search.start();
    queue.advance(29'999ms);
    EXPECT_EQ(log, "");
    queue.advance(1ms);
    EXPECT_EQ(log, "missing ");
    queue.advance(1h);
    EXPECT_EQ(log, "missing ");
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(TrayHostSearchTest, XembedTrayIsTakenAfterTheWaitingTimeOnly) {
    setXembed(true);
    search.start();
    queue.advance(29'999ms);
    EXPECT_EQ(log, "");
    queue.advance(1ms);
    EXPECT_EQ(log, "xembed ");
}

TEST_F(TrayHostSearchTest, NotifierHostIsPreferredToAnXembedTray) {
    search.start();
    setXembed(true);
    queue.advance(20s);
    setNotifier(true);
    queue.advance(1h);
    EXPECT_EQ(log, "notifier ");
}

TEST_F(TrayHostSearchTest, NotifierHostIsPreferredBeforeItsComingIsTold) {
    search.start();
    setXembed(true);
    notifier_ = true;
    queue.advance(30s);
    EXPECT_EQ(log, "notifier ");
}

TEST_F(TrayHostSearchTest, NotifierHostThatComesAfterAllAppearsAtOnce) {
    search.start();
    queue.advance(10min);
    setNotifier(true);
    EXPECT_EQ(log, "missing notifier appeared ");
}

TEST_F(TrayHostSearchTest, NotifierHostThatComesWhileItsAbsenceIsToldAppears) {
    onMissing = [this] { setNotifier(true); };
    search.start();
    queue.advance(1h);
    EXPECT_EQ(log, "missing notifier appeared ");
}

TEST_F(TrayHostSearchTest, XembedTrayThatComesAfterAllAppearsWithinTwoSeconds) {
    search.start();
    queue.advance(10min);
    setXembed(true);
    queue.advance(999ms);
    EXPECT_EQ(log, "missing ");
    queue.advance(1ms);
    EXPECT_EQ(log, "missing xembed appeared ");
}

TEST_F(TrayHostSearchTest, NotifierHostThatFollowsALateXembedTrayIsPreferred) {
    search.start();
    queue.advance(10min);
    setXembed(true);
    queue.advance(500ms);
    setNotifier(true);
    queue.advance(1h);
    EXPECT_EQ(log, "missing notifier appeared ");
}

TEST_F(TrayHostSearchTest, LateXembedTrayThatGoesAgainIsNotTaken) {
    search.start();
    queue.advance(10min);
    setXembed(true);
    setXembed(false);
    queue.advance(1h);
    EXPECT_EQ(log, "missing ");
}

TEST_F(TrayHostSearchTest, ChangeThatBringsNoTrayAfterAllWakesNobody) {
    search.start();
    queue.advance(10min);
    setXembed(false);
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(TrayHostSearchTest, HostThatRestartsSoonIsNotMissed) {
    setNotifier(true);
    search.start();
    setNotifier(false);
    queue.advance(29s);
    setNotifier(true);
    queue.advance(1h);
    EXPECT_EQ(log, "notifier notifier ");
}

TEST_F(TrayHostSearchTest, HostThatStaysAwayIsMissedUntilItComes) {
    setNotifier(true);
    search.start();
    setNotifier(false);
    queue.advance(30s);
    EXPECT_EQ(log, "notifier missing ");
    setNotifier(true);
    EXPECT_EQ(log, "notifier missing notifier appeared ");
}

TEST_F(TrayHostSearchTest, XembedTrayStandsInForALostNotifierHostAfterTheWaitingTimeOnly) {
    setNotifier(true);
    search.start();
    setNotifier(false);
    setXembed(true);
    queue.advance(29'999ms);
    EXPECT_EQ(log, "notifier ");
    queue.advance(1ms);
    EXPECT_EQ(log, "notifier xembed ");
}

TEST_F(TrayHostSearchTest, NotifierHostStandsInForALostXembedTrayAtOnce) {
    setXembed(true);
    search.start();
    queue.advance(30s);
    setXembed(false);
    queue.advance(5s);
    setNotifier(true);
    EXPECT_EQ(log, "xembed notifier ");
    setXembed(true);
    queue.advance(1h);
    EXPECT_EQ(log, "xembed notifier ");
}

TEST_F(TrayHostSearchTest, ItemStaysInAnXembedTrayWhenANotifierHostComes) {
    setXembed(true);
    search.start();
    queue.advance(30s);
    setNotifier(true);
    queue.advance(1h);
    EXPECT_EQ(log, "xembed ");
    setXembed(false);
    EXPECT_EQ(log, "xembed notifier ");
}

TEST_F(TrayHostSearchTest, XembedTrayThatRestartsIsTakenAtOnce) {
    setXembed(true);
    search.start();
    queue.advance(30s);
    setXembed(false);
    queue.advance(29s);
    setXembed(true);
    EXPECT_EQ(log, "xembed xembed ");
    setXembed(false);
    queue.advance(30s);
    setXembed(true);
    EXPECT_EQ(log, "xembed xembed missing xembed appeared ");
}

}  // namespace
}  // namespace valdorn
