#include <cerrno>
#include <optional>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/qt/ExchangesUnderWay.h"
#include "support/NoDescriptors.h"
#include "ui/LoopbackListener.h"

namespace valdorn {
namespace {

using End = ExchangesUnderWay::End;

// A connection over the loopback interface, both of whose ends are in this process.
class Connection {
public:
    Connection() {
        sockaddr_in address{};
        const int listener = listenOnLoopback(address);
        const auto* const plain = reinterpret_cast<const sockaddr*>(&address);
        EXPECT_EQ(connect(own_, plain, sizeof address), 0);
        peer_ = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        close(listener);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        close(own_);
        close(peer_);
    }

    void ask() const { EXPECT_EQ(send(own_, "?", 1, MSG_NOSIGNAL), 1); }
    void hear() const { EXPECT_EQ(send(peer_, "!", 1, MSG_NOSIGNAL), 1); }
    bool isCut() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        return getpeername(own_, reinterpret_cast<sockaddr*>(&address), &size) != 0 &&
               errno == ENOTCONN;
    }

private:
    const int own_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int peer_ = -1;
};

TEST(ExchangesUnderWayTest, CutsNothingOfThoseThatEndByThemselves) {
    ExchangesUnderWay exchanges;
    const auto only = exchanges.begin();
    const Connection kept;
    exchanges.end(only, End::byItself);
    EXPECT_FALSE(kept.isCut());
}

TEST(ExchangesUnderWayTest, CutsAtTheEndOfTheLastWhateverHasComeUpSinceTheFirst) {
    const Connection before;
    ExchangesUnderWay exchanges;
    const Connection idle;
    const auto only = exchanges.begin();
    const Connection own;
    before.ask();
    exchanges.end(only, End::abandoned);
    EXPECT_TRUE(own.isCut());
    EXPECT_TRUE(idle.isCut());
    EXPECT_FALSE(before.isCut());
}

TEST(ExchangesUnderWayTest, CutsWhatTheOldestHasLeftWhileOthersAreUnderWay) {
    ExchangesUnderWay exchanges;
    const Connection idle;
    const Connection usedAgain;
    const auto older = exchanges.begin();
    const Connection olders;
    const auto younger = exchanges.begin();
    const Connection youngers;
    olders.hear();
    usedAgain.ask();
    usedAgain.hear();
    youngers.hear();
    exchanges.end(older, End::abandoned);
    EXPECT_TRUE(olders.isCut());
    EXPECT_FALSE(idle.isCut());
    EXPECT_FALSE(usedAgain.isCut());
    EXPECT_FALSE(youngers.isCut());
    exchanges.end(younger, End::byItself);
    EXPECT_TRUE(youngers.isCut());
}

// Such as that of a remote display, which speaks unasked.
TEST(ExchangesUnderWayTest, CutsNothingThatWasThereBeforeIt) {
    const Connection before;
    ExchangesUnderWay exchanges;
    const auto older = exchanges.begin();
    exchanges.begin();
    before.hear();
    exchanges.end(older, End::abandoned);
    EXPECT_FALSE(before.isCut());
}

// What floods in may have stood still for the moment between.
TEST(ExchangesUnderWayTest, CutsAlsoWhatWasReceivedBeforeTheYoungerBeganAndIsStillUnread) {
    ExchangesUnderWay exchanges;
    const auto older = exchanges.begin();
    const Connection olders;
    olders.hear();
    exchanges.begin();
    exchanges.end(older, End::abandoned);
    EXPECT_TRUE(olders.isCut());
}

TEST(ExchangesUnderWayTest, CutsNothingOfThoseUnderWayThatIsHeardOfAfterAYoungerOneBegan) {
    ExchangesUnderWay exchanges;
    const auto oldest = exchanges.begin();
    exchanges.begin();
    const Connection seconds;
    exchanges.begin();
    seconds.hear();
    exchanges.end(oldest, End::abandoned);
    EXPECT_FALSE(seconds.isCut());
}

TEST(ExchangesUnderWayTest, CutsNothingForAYoungerOneWhileTheOldestIsUnderWay) {
    ExchangesUnderWay exchanges;
    exchanges.begin();
    const Connection olders;
    const auto younger = exchanges.begin();
    const Connection youngers;
    olders.hear();
    youngers.hear();
    exchanges.end(younger, End::abandoned);
    EXPECT_FALSE(olders.isCut());
    EXPECT_FALSE(youngers.isCut());
}

TEST(ExchangesUnderWayTest, CutsWhatCameUpLateWhenTheLastEnds) {
    ExchangesUnderWay exchanges;
    const auto older = exchanges.begin();
    const auto younger = exchanges.begin();
    const Connection late;
    late.hear();
    exchanges.end(older, End::abandoned);
    EXPECT_FALSE(late.isCut());
    exchanges.end(younger, End::byItself);
    EXPECT_TRUE(late.isCut());
}

// Otherwise new ones without end would put it off without end.
TEST(ExchangesUnderWayTest, CutsWhatCameUpLateOnceAllOfThatTimeHaveEnded) {
    ExchangesUnderWay exchanges;
    const auto first = exchanges.begin();
    const auto second = exchanges.begin();
    const Connection late;
    exchanges.end(first, End::abandoned);
    exchanges.begin();
    late.hear();
    EXPECT_FALSE(late.isCut());
    exchanges.end(second, End::byItself);
    EXPECT_TRUE(late.isCut());
}

TEST(ExchangesUnderWayTest, AnAbandonedOneIsForgottenOnceNoneIsUnderWay) {
    ExchangesUnderWay exchanges;
    exchanges.end(exchanges.begin(), End::abandoned);
    const auto next = exchanges.begin();
    const Connection kept;
    exchanges.end(next, End::byItself);
    EXPECT_FALSE(kept.isCut());
}

TEST(ExchangesUnderWayTest, TellsOnceThatAllHasBeenCutAndNotWhileOneIsUnderWay) {
    ExchangesUnderWay exchanges;
    exchanges.end(exchanges.begin(), End::byItself);
    EXPECT_FALSE(exchanges.takeCutOff());
    const auto older = exchanges.begin();
    const auto younger = exchanges.begin();
    exchanges.end(older, End::abandoned);
    EXPECT_FALSE(exchanges.takeCutOff());
    exchanges.end(younger, End::byItself);
    const auto next = exchanges.begin();
    EXPECT_FALSE(exchanges.takeCutOff());
    exchanges.end(next, End::byItself);
    EXPECT_TRUE(exchanges.takeCutOff());
    EXPECT_FALSE(exchanges.takeCutOff());
}

TEST(ExchangesUnderWayTest, TellsOfNoCutWhereSomeMayBeLeft) {
    ExchangesUnderWay exchanges;
    {
        const auto one = exchanges.begin();
        const NoDescriptors none;
        exchanges.end(one, End::abandoned);
    }
    EXPECT_FALSE(exchanges.takeCutOff());
    exchanges.end(exchanges.begin(), End::abandoned);
    EXPECT_TRUE(exchanges.takeCutOff());

    std::optional<NoDescriptors> none(std::in_place);
    ExchangesUnderWay others;
    none.reset();
    others.end(others.begin(), End::abandoned);
    EXPECT_FALSE(others.takeCutOff());
}

TEST(ExchangesUnderWayTest, AfterTheEndOfAllTheEndOfOneMeansNothing) {
    ExchangesUnderWay exchanges;
    const auto one = exchanges.begin();
    const Connection cut;
    exchanges.endAll();
    EXPECT_TRUE(cut.isCut());
    const Connection anothers;
    exchanges.end(one, End::abandoned);
    EXPECT_FALSE(anothers.isCut());
}

TEST(ExchangesUnderWayTest, WithoutKnowingWhatThereWasBeforeNothingIsCut) {
    std::optional<NoDescriptors> none(std::in_place);
    ExchangesUnderWay exchanges;
    none.reset();
    const Connection anybodys;
    exchanges.end(exchanges.begin(), End::abandoned);
    EXPECT_FALSE(anybodys.isCut());
}

TEST(ExchangesUnderWayTest, WhatCouldNotBeCutIsCutAtTheEndOfTheNext) {
    ExchangesUnderWay exchanges;
    const auto first = exchanges.begin();
    const Connection firsts;
    const auto second = exchanges.begin();
    firsts.hear();
    {
        const NoDescriptors none;
        exchanges.end(first, End::abandoned);
    }
    EXPECT_FALSE(firsts.isCut());
    exchanges.end(second, End::byItself);
    EXPECT_TRUE(firsts.isCut());
}

}  // namespace
}  // namespace valdorn
