#include <QPointer>
#include <QSslSocket>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "contracts/HttpClientContract.h"
#include "platform/qt/NetworkHttpClient.h"
#include "support/VirtualMainQueue.h"
#include "ui/EndlessHead.h"
#include "ui/EndlessHeads.h"
#include "ui/EventLoop.h"
#include "ui/LoopbackServer.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

// A server that keeps connections waiting until it is told how to answer.
class WaitingServer {
public:
    HttpClient& client() { return *client_; }
    void destroyClient() { client_.reset(); }
    std::string url() const { return server_.url(); }
    void answer(const std::string& status, const std::string& body) {
        answer_ = httpAnswer(QByteArray::fromStdString(status), QByteArray::fromStdString(body));
        answerWaiting();
    }
    void breakConnections() {
        answer_ = QByteArray();
        answerWaiting();
    }
    void pass(std::chrono::milliseconds time) {
        runReadyEvents();
        queue_.advance(time);
        runReadyEvents();
    }
    bool runUntil(const std::function<bool()>& condition) {
        return valdorn::runUntil([this, &condition] {
            queue_.advance(0ms);
            return condition();
        });
    }

private:
    void answerWaiting() {
        for (const QPointer<QTcpSocket>& connection : std::exchange(waiting_, {})) {
            if (connection) {
                connection->write(*answer_);
                connection->disconnectFromHost();
            }
        }
    }

    VirtualMainQueue queue_;
    std::optional<NetworkHttpClient> client_{queue_};
    std::optional<QByteArray> answer_;
    QList<QPointer<QTcpSocket>> waiting_;
    LoopbackServer server_{[this](QTcpSocket& connection, const QByteArray&) {
        waiting_.append(&connection);
        if (answer_)
            answerWaiting();
    }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Network, HttpClientContract, WaitingServer);

class NetworkHttpClientTest : public testing::Test {
protected:
    using Outcome = Result<std::string, HttpError>;

    void fetch(const std::string& url, std::size_t maxBodyBytes = 1000) {
        request = client.get({url, 10s, maxBodyBytes}, [this](const Outcome& result) {
            ++completions;
            outcome = result;
        });
    }

    // What came of the request, once the network has told.
    Outcome awaited() {
        EXPECT_TRUE(runUntil([this] { return outcome.has_value(); }));
        EXPECT_EQ(completions, 1);
        return outcome.value_or(HttpError{HttpError::Kind::network, "no completion"});
    }

    // One beside that of fetch(), of which only the end is told.
    std::unique_ptr<HttpRequest> fetchBeside(const std::string& url, std::optional<Outcome>& end) {
        return client.get({url, 10s, 1000}, [&end](const Outcome& result) { end = result; });
    }

    VirtualMainQueue queue;
    NetworkHttpClient client{queue};
    std::unique_ptr<HttpRequest> request;
    std::optional<Outcome> outcome;
    int completions = 0;
};

TEST_F(NetworkHttpClientTest, NoTimerStaysAfterTheAnswer) {
    LoopbackServer server(always(httpAnswer("200 OK", "hello")));
    fetch(server.url());
    EXPECT_EQ(queue.pending(), 1U);
    EXPECT_TRUE(awaited().ok());
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(NetworkHttpClientTest, GetIsSentWithThePathAndNoHeadersOfOurs) {
    QByteArray seen;
    LoopbackServer server([&seen](QTcpSocket& connection, const QByteArray& head) {
        seen = head;
        always(httpAnswer("200 OK", ""))(connection, head);
    });
    fetch(server.url("/api/v1/latest?x=1"));
    EXPECT_TRUE(awaited().ok());
    EXPECT_TRUE(seen.startsWith("GET /api/v1/latest?x=1 HTTP/1.1\r\n")) << seen.toStdString();
    expectOnlyDefaultHeaders(seen);
}

TEST_F(NetworkHttpClientTest, TimeOutClosesTheConnection) {
    LoopbackServer server([](QTcpSocket&, const QByteArray&) {});
    fetch(server.url());
    EXPECT_TRUE(runUntil([&server] { return server.requests == 1; }));
    queue.advance(10s);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::timeout);
    EXPECT_TRUE(runUntil([&server] { return server.disconnections == 1; }));
}

TEST_F(NetworkHttpClientTest, TricklingServerTimesOutAllTheSame) {
    QTcpSocket* trickle = nullptr;
    LoopbackServer server([&trickle](QTcpSocket& connection, const QByteArray&) {
        trickle = &connection;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n");
    });
    fetch(server.url());
    EXPECT_TRUE(runUntil([&trickle] { return trickle != nullptr; }));
    for (int second = 0; second < 9; ++second) {
        trickle->write("x");
        queue.advance(1s);
        runReadyEvents();
        ASSERT_FALSE(outcome);
    }
    queue.advance(1s);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::timeout);
}

TEST_F(NetworkHttpClientTest, EndlessBodyIsCutOffWhileItIsRead) {
    LoopbackServer server([](QTcpSocket& connection, const QByteArray&) {
        QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection, [&connection] {
            if (connection.bytesToWrite() == 0)
                connection.write(QByteArray(65536, 'x'));
        });
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
    });
    fetch(server.url(), 1'000'000);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::tooLarge);
    EXPECT_TRUE(runUntil([&server] { return server.disconnections == 1; }));
}

// Qt reads on for as long as there is anything to read, and its thread hears of nothing else.
TEST_F(NetworkHttpClientTest, EndlessHeadEndsWithTheTime) {
    const std::vector<std::pair<std::string, std::string>> heads{
        {"HTTP/1.1 200 OK\r\nX: ", std::string(65536, 'a')},
        {"HTTP/1.1 200 OK\r\n", "X: a\r\nSet-Cookie: a=b\r\n"},
        {"", "HTTP/1.1 100 Continue\r\n\r\n"}};
    for (const auto& [begin, more] : heads) {
        SCOPED_TRACE(more.substr(0, 20));
        EndlessHead server(begin, more);
        completions = 0;
        outcome.reset();
        fetch(server.url());
        ASSERT_TRUE(runUntil([&server] { return server.hasSentMuch(); }));
        queue.advance(10s);
        EXPECT_EQ(awaited().error().kind, HttpError::Kind::timeout);
        EXPECT_TRUE(runUntil([&server] { return server.isOver(); }));
    }
}

TEST_F(NetworkHttpClientTest, DroppingInTheMiddleOfAnEndlessHeadClosesTheConnection) {
    EndlessHead server("HTTP/1.1 200 OK\r\nX: ", std::string(65536, 'a'));
    fetch(server.url());
    ASSERT_TRUE(runUntil([&server] { return server.hasSentMuch(); }));
    request.reset();
    EXPECT_TRUE(runUntil([&server] { return server.isOver(); }));
}

TEST_F(NetworkHttpClientTest, TheEndOfTheClientEndsAnEndlessHead) {
    EndlessHead server("HTTP/1.1 200 OK\r\nX: ", std::string(65536, 'a'));
    std::optional<NetworkHttpClient> ending(queue);
    const auto waiting =
        ending->get({server.url(), 10s, 1000}, [this](const Outcome&) { ++completions; });
    ASSERT_TRUE(runUntil([&server] { return server.hasSentMuch(); }));
    ending.reset();
    EXPECT_TRUE(runUntil([&server] { return server.isOver(); }));
    EXPECT_EQ(completions, 0);
}

TEST_F(NetworkHttpClientTest, DroppingOneLeavesAnotherItsConnection) {
    QPointer<QTcpSocket> kept;
    LoopbackServer server([&kept](QTcpSocket& connection, const QByteArray& head) {
        if (head.startsWith("GET /kept "))
            kept = &connection;
    });
    fetch(server.url("/kept"));
    auto dropped = client.get({server.url("/dropped"), 10s, 1000}, [](const Outcome&) {});
    ASSERT_TRUE(runUntil([&server] { return server.requests == 2; }));
    dropped.reset();
    ASSERT_TRUE(runUntil([&server] { return server.disconnections == 1; }));
    ASSERT_TRUE(kept);
    always(httpAnswer("200 OK", "kept"))(*kept, {});
    EXPECT_EQ(awaited().value(), "kept");
}

const std::string endlessBegin = "HTTP/1.1 200 OK\r\nX: ";
const std::string endlessRest(65536, 'a');

TEST_F(NetworkHttpClientTest, AnOlderInAnEndlessHeadIsCutAndAYoungerOneGetsItsAnswer) {
    EndlessHead endless(endlessBegin, endlessRest, EndlessHead::Start::whenTold);
    QPointer<QTcpSocket> waiting;
    LoopbackServer server(
        [&waiting](QTcpSocket& connection, const QByteArray&) { waiting = &connection; });
    std::optional<Outcome> older;
    const auto olderRequest = fetchBeside(endless.url(), older);
    ASSERT_TRUE(runUntil([&endless] { return endless.isAsked(); }));
    queue.advance(1s);
    fetch(server.url());
    ASSERT_TRUE(runUntil([&waiting] { return !waiting.isNull(); }));
    endless.start();
    ASSERT_TRUE(runUntil([&endless] { return endless.hasSentMuch(); }));
    queue.advance(9s);
    ASSERT_TRUE(older);
    EXPECT_EQ(older->error().kind, HttpError::Kind::timeout);
    ASSERT_TRUE(runUntil([&endless] { return endless.isOver(); }));
    ASSERT_EQ(server.disconnections, 0);
    always(httpAnswer("200 OK", "kept"))(*waiting, {});
    EXPECT_EQ(awaited().value(), "kept");
}

// Qt's thread is too busy to connect.
TEST_F(NetworkHttpClientTest, AYoungerThatBeganDuringAnEndlessHeadGetsItsAnswerAfterTheCut) {
    EndlessHead endless(endlessBegin, endlessRest);
    LoopbackServer server(always(httpAnswer("200 OK", "late")));
    std::optional<Outcome> older;
    const auto olderRequest = fetchBeside(endless.url(), older);
    ASSERT_TRUE(runUntil([&endless] { return endless.hasSentMuch(); }));
    queue.advance(1s);
    fetch(server.url());
    endless.countAnew();
    ASSERT_TRUE(runUntil([&endless] { return endless.hasSentMuch(); }));
    queue.advance(9s);
    ASSERT_TRUE(older);
    EXPECT_EQ(awaited().value(), "late");
    EXPECT_TRUE(runUntil([&endless] { return endless.isOver(); }));
}

TEST_F(NetworkHttpClientTest, OfThreeTheOldestIsCutEachTime) {
    EndlessHead first(endlessBegin, endlessRest, EndlessHead::Start::whenTold);
    EndlessHead second(endlessBegin, endlessRest, EndlessHead::Start::whenTold);
    QPointer<QTcpSocket> waiting;
    LoopbackServer server(
        [&waiting](QTcpSocket& connection, const QByteArray&) { waiting = &connection; });
    std::vector<std::optional<Outcome>> ends(2);
    std::vector<std::unique_ptr<HttpRequest>> requests;
    for (EndlessHead* const endless : {&first, &second}) {
        requests.push_back(fetchBeside(endless->url(), ends[requests.size()]));
        ASSERT_TRUE(runUntil([endless] { return endless->isAsked(); }));
        queue.advance(1s);
    }
    fetch(server.url());
    ASSERT_TRUE(runUntil([&waiting] { return !waiting.isNull(); }));
    first.start();
    ASSERT_TRUE(runUntil([&first] { return first.hasSentMuch(); }));
    queue.advance(8s);
    ASSERT_TRUE(ends[0]);
    ASSERT_TRUE(runUntil([&first] { return first.isOver(); }));
    second.start();
    ASSERT_TRUE(runUntil([&second] { return second.hasSentMuch(); }));
    EXPECT_FALSE(ends[1]);
    queue.advance(1s);
    ASSERT_TRUE(ends[1]);
    ASSERT_TRUE(runUntil([&second] { return second.isOver(); }));
    ASSERT_EQ(server.disconnections, 0);
    always(httpAnswer("200 OK", "kept"))(*waiting, {});
    EXPECT_EQ(awaited().value(), "kept");
}

// Qt (6.4) has six connections with one server, and may keep one that was cut for busy.
TEST_F(NetworkHttpClientTest, ManyEndlessHeadsOfOneServerDoNotKeepItFromBeingAskedAgain) {
    EndlessHeads server;
    const auto abandonForAnother = [&] {
        request = client.get({server.url(), 10s, 1000}, [](const Outcome&) {});
    };
    for (int asked = 1; asked <= 6; ++asked) {
        abandonForAnother();
        ASSERT_TRUE(runUntil([&server, asked] { return server.asked() == asked; }));
    }
    abandonForAnother();
    queue.advance(10s);
    server.answerWell();
    fetch(server.url());
    EXPECT_EQ(awaited().value(), "well");
}

// Such as one that was led to another server: it could be the younger's, for all that is known.
TEST_F(NetworkHttpClientTest, AConnectionThatCameUpLateIsCutAtTheEndOfTheLast) {
    EndlessHead endless(endlessBegin, endlessRest);
    std::vector<QPointer<QTcpSocket>> waiting;
    LoopbackServer server([&waiting](QTcpSocket& connection, const QByteArray&) {
        waiting.emplace_back(&connection);
    });
    std::optional<Outcome> older;
    const auto olderRequest = fetchBeside(server.url(), older);
    ASSERT_TRUE(runUntil([&waiting] { return waiting.size() == 1; }));
    queue.advance(1s);
    fetch(server.url());
    ASSERT_TRUE(runUntil([&waiting] { return waiting.size() == 2; }));
    redirectTo(endless.url())(*waiting[0], {});
    ASSERT_TRUE(runUntil([&endless] { return endless.hasSentMuch(); }));
    queue.advance(9s);
    ASSERT_TRUE(older);
    EXPECT_FALSE(outcome);
    queue.advance(1s);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::timeout);
    EXPECT_TRUE(runUntil([&endless] { return endless.isOver(); }));
}

// Qt asks again on a connection that has been kept open. It came up before the younger began, which
// is why that alone must not tell.
TEST_F(NetworkHttpClientTest, AConnectionThatIsUsedAgainIsNotCutForAnOlderExchange) {
    EndlessHead endless(endlessBegin, endlessRest, EndlessHead::Start::whenTold);
    QPointer<QTcpSocket> again;
    LoopbackServer server([&again](QTcpSocket& connection, const QByteArray& head) {
        if (head.startsWith("GET /first "))
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        else
            again = &connection;
    });
    std::optional<Outcome> older;
    const auto olderRequest = fetchBeside(endless.url(), older);
    ASSERT_TRUE(runUntil([&endless] { return endless.isAsked(); }));
    fetch(server.url("/first"));
    EXPECT_TRUE(awaited().ok());
    completions = 0;
    outcome.reset();
    queue.advance(1s);
    fetch(server.url("/again"));
    ASSERT_TRUE(runUntil([&again] { return !again.isNull(); }));
    // The server's end is in this process as well, and not to be taken for one nobody speaks on.
    again->write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n");
    runReadyEvents();
    endless.start();
    ASSERT_TRUE(runUntil([&endless] { return endless.hasSentMuch(); }));
    queue.advance(9s);
    ASSERT_TRUE(older);
    ASSERT_TRUE(runUntil([&endless] { return endless.isOver(); }));
    ASSERT_TRUE(again);
    again->write("\r\nkept");
    EXPECT_EQ(awaited().value(), "kept");
    EXPECT_EQ(server.requests, 2);
    EXPECT_EQ(server.disconnections, 0);
}

TEST_F(NetworkHttpClientTest, LongBodyBelowTheLimitArrivesWhole) {
    const QByteArray body(3'000'000, 'y');
    LoopbackServer server(always(httpAnswer("200 OK", body)));
    fetch(server.url(), 5'000'000);
    EXPECT_EQ(awaited().value().size(), 3'000'000U);
}

bool sendAll(QTcpSocket& connection, const QByteArray& bytes) {
    connection.write(bytes);
    while (connection.bytesToWrite() > 0 && connection.waitForBytesWritten())
        continue;
    return connection.bytesToWrite() == 0;
}

bool isClosedByItsPeer(const QTcpSocket& connection) {
    char byte = 0;
    return recv(static_cast<int>(connection.socketDescriptor()), &byte, 1,
                MSG_PEEK | MSG_DONTWAIT) == 0;
}

// Qt closes a connection as soon as it has all of the answer. Here the bodies have arrived before
// anybody reads (the event loop rests): the long one, which could be had long since when the short
// one is, still waits at the socket.
TEST_F(NetworkHttpClientTest, OfALongBodyThatNobodyReadsQtTakesLittle) {
    QPointer<QTcpSocket> longOne;
    QPointer<QTcpSocket> shortOne;
    LoopbackServer server([&](QTcpSocket& connection, const QByteArray& head) {
        (head.startsWith("GET /long ") ? longOne : shortOne) = &connection;
    });
    fetch(server.url("/long"), 1'000'000);
    std::optional<Outcome> beside;
    const auto requestBeside = fetchBeside(server.url("/short"), beside);
    ASSERT_TRUE(runUntil([&] { return longOne && shortOne; }));
    longOne->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 1'000'000);
    ASSERT_TRUE(sendAll(*longOne, httpAnswer("200 OK", QByteArray(300'000, 'y'))));
    ASSERT_TRUE(sendAll(*shortOne, httpAnswer("200 OK", "short")));
    ASSERT_TRUE(shortOne->waitForDisconnected());
    EXPECT_FALSE(isClosedByItsPeer(*longOne));
    EXPECT_EQ(awaited().value().size(), 300'000U);
    EXPECT_TRUE(beside && beside->ok());
}

TEST_F(NetworkHttpClientTest, CutOffBodyIsAFailureWhateverTheStatus) {
    for (const char* const status : {"200 OK", "404 Not Found"}) {
        LoopbackServer server(
            always(QByteArray("HTTP/1.1 ") + status + "\r\nContent-Length: 100\r\n\r\nonly this"));
        completions = 0;
        outcome.reset();
        fetch(server.url());
        const Outcome result = awaited();
        ASSERT_FALSE(result.ok()) << status << ": " << result.value();
        EXPECT_EQ(result.error().kind, HttpError::Kind::network) << status;
    }
}

TEST_F(NetworkHttpClientTest, ClosedPortIsAReadableFailure) {
    std::string url;
    {
        const LoopbackServer gone([](QTcpSocket&, const QByteArray&) {});
        url = gone.url();
    }
    fetch(url);
    const HttpError error = awaited().error();
    EXPECT_EQ(error.kind, HttpError::Kind::network);
    EXPECT_FALSE(error.description.empty());
}

TEST_F(NetworkHttpClientTest, MalformedAddressIsNotFetched) {
    for (const char* const url : {"http://[broken", "http://bad host/"}) {
        completions = 0;
        outcome.reset();
        fetch(url);
        queue.advance(0ms);
        ASSERT_TRUE(outcome) << url;
        EXPECT_EQ(outcome->error().kind, HttpError::Kind::invalidUrl) << url;
    }
}

TEST_F(NetworkHttpClientTest, DroppingBeforeTheAnswerClosesTheConnection) {
    LoopbackServer server([](QTcpSocket&, const QByteArray&) {});
    fetch(server.url());
    EXPECT_TRUE(runUntil([&server] { return server.requests == 1; }));
    request.reset();
    EXPECT_TRUE(runUntil([&server] { return server.disconnections == 1; }));
    queue.advance(1h);
    EXPECT_EQ(completions, 0);
}

TEST_F(NetworkHttpClientTest, DroppingInTheMiddleOfTheBodyClosesTheConnection) {
    LoopbackServer server([](QTcpSocket& connection, const QByteArray&) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
    });
    fetch(server.url());
    EXPECT_TRUE(runUntil([&server] { return server.requests == 1; }));
    runReadyEvents();
    request.reset();
    EXPECT_TRUE(runUntil([&server] { return server.disconnections == 1; }));
    EXPECT_EQ(completions, 0);
}

TEST_F(NetworkHttpClientTest, DroppingLeavesNothingArmed) {
    fetch("nonsense");
    request.reset();
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(NetworkHttpClientTest, RedirectIsFollowed) {
    LoopbackServer server([](QTcpSocket& connection, const QByteArray& head) {
        const bool moved = head.startsWith("GET /old ");
        connection.write(moved ? QByteArray("HTTP/1.1 302 Found\r\nLocation: /new\r\n"
                                            "Content-Length: 0\r\nConnection: close\r\n\r\n")
                               : httpAnswer("200 OK", "moved here"));
        connection.disconnectFromHost();
    });
    fetch(server.url("/old"));
    EXPECT_EQ(awaited().value(), "moved here");
}

TEST_F(NetworkHttpClientTest, WhatARedirectSaysBesidesIsNotTheBody) {
    LoopbackServer server([](QTcpSocket& connection, const QByteArray& head) {
        const bool moved = head.startsWith("GET /old ");
        connection.write(moved ? QByteArray("HTTP/1.1 302 Found\r\nLocation: new?a=b%20c#d\r\n"
                                            "Content-Length: 2000\r\n\r\n") +
                                     QByteArray(2000, 'x')
                               : httpAnswer("200 OK", head.left(head.indexOf('\r'))));
        connection.disconnectFromHost();
    });
    fetch(server.url("/old"), 1000);
    EXPECT_EQ(awaited().value(), "GET /new?a=b%20c HTTP/1.1");
}

TEST_F(NetworkHttpClientTest, RedirectToAnotherServerIsFollowed) {
    LoopbackServer other(always(httpAnswer("200 OK", "moved there")));
    LoopbackServer server(redirectTo(other.url("/new")));
    fetch(server.url());
    EXPECT_EQ(awaited().value(), "moved there");
    EXPECT_EQ(other.requests, 1);
}

TEST_F(NetworkHttpClientTest, CertificateThatNobodySignedIsRefused) {
    LoopbackServer server(always(httpAnswer("200 OK", "secret")), selfSignedServer());
    fetch(server.url("/", "https"));
    const HttpError error = awaited().error();
    EXPECT_EQ(error.kind, HttpError::Kind::network);
    EXPECT_NE(error.description.find("certificate"), std::string::npos) << error.description;
    EXPECT_EQ(server.requests, 0);
}

TEST_F(NetworkHttpClientTest, CertificateThatSomebodyTrustedHasSignedIsTaken) {
    const TrustInTheServer trust;
    LoopbackServer server(always(httpAnswer("200 OK", "secret")), selfSignedServer());
    fetch(server.url("/", "https"));
    EXPECT_EQ(awaited().value(), "secret");
}

// With HTTP/2 exchanges would share a connection, and the cut of one would be that of all.
TEST_F(NetworkHttpClientTest, Http2IsNotWanted) {
    const TrustInTheServer trust;
    QByteArray protocol;
    LoopbackServer server(
        [&protocol](QTcpSocket& connection, const QByteArray& head) {
            protocol =
                dynamic_cast<QSslSocket&>(connection).sslConfiguration().nextNegotiatedProtocol();
            always(httpAnswer("200 OK", ""))(connection, head);
        },
        selfSignedServer());
    fetch(server.url("/", "https"));
    EXPECT_TRUE(awaited().ok());
    EXPECT_NE(protocol, QSslConfiguration::ALPNProtocolHTTP2);
}

TEST_F(NetworkHttpClientTest, TrustedCertificateOfAnotherHostIsRefused) {
    const TrustInTheServer trust;
    LoopbackServer server(always(httpAnswer("200 OK", "secret")), selfSignedServer());
    const std::string url = server.url("/", "https");
    fetch("https://localhost" + url.substr(url.rfind(':')));
    const HttpError error = awaited().error();
    EXPECT_EQ(error.kind, HttpError::Kind::network);
    EXPECT_NE(error.description.find("host name"), std::string::npos) << error.description;
    EXPECT_EQ(server.requests, 0);
}

TEST_F(NetworkHttpClientTest, RedirectFromHttpsToHttpIsRefused) {
    const TrustInTheServer trust;
    LoopbackServer open(always(httpAnswer("200 OK", "anybody's")));
    LoopbackServer server(redirectTo(open.url()), selfSignedServer());
    fetch(server.url("/", "https"));
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::network);
    EXPECT_EQ(server.requests, 1);
    EXPECT_EQ(open.requests, 0);
}

TEST_F(NetworkHttpClientTest, RedirectsWithoutEndAreGivenUp) {
    int last = 0;
    LoopbackServer server([&last](QTcpSocket& connection, const QByteArray& head) {
        last = head.mid(5, head.indexOf(' ', 5) - 5).toInt();  // "GET /7 HTTP/1.1"
        redirectTo("/" + std::to_string(last + 1))(connection, head);
    });
    fetch(server.url("/0"));
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::network);
    EXPECT_EQ(last, 50);
}

TEST_F(NetworkHttpClientTest, RedirectDoesNotRenewTheTime) {
    QPointer<QTcpSocket> first;
    bool isFollowed = false;
    LoopbackServer server([&](QTcpSocket& connection, const QByteArray& head) {
        if (head.startsWith("GET /again "))
            isFollowed = true;
        else
            first = &connection;
    });
    fetch(server.url());
    ASSERT_TRUE(runUntil([&first] { return !first.isNull(); }));
    queue.advance(9s);
    redirectTo("/again")(*first, {});
    ASSERT_TRUE(runUntil([&isFollowed] { return isFollowed; }));
    queue.advance(999ms);
    ASSERT_FALSE(outcome);
    queue.advance(1ms);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::timeout);
}

// An answer whose body unpacks to so many bytes, a hundred times as many as it has.
QByteArray packedAnswer(int bytes) {
    constexpr int headOfQtsOwn = 4;
    const QByteArray packed = qCompress(QByteArray(bytes, 'x'), 9).mid(headOfQtsOwn);
    EXPECT_LT(packed.size(), bytes / 100);
    return "HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\nContent-Length: " +
           QByteArray::number(packed.size()) + "\r\nConnection: close\r\n\r\n" + packed;
}

TEST_F(NetworkHttpClientTest, PackedBodyArrivesUnpacked) {
    LoopbackServer server(always(packedAnswer(500'000)));
    fetch(server.url(), 1'000'000);
    EXPECT_EQ(awaited().value(), std::string(500'000, 'x'));
}

TEST_F(NetworkHttpClientTest, BodyThatUnpacksToMoreThanTheLimitIsTooLarge) {
    LoopbackServer server(always(packedAnswer(9'000'000)));
    fetch(server.url(), 1'000'000);
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::tooLarge);
}

// Beyond ten megabytes Qt itself refuses what was packed so well, whatever our limit.
TEST_F(NetworkHttpClientTest, BodyThatUnpacksToFarMoreThanTheLimitIsAFailure) {
    LoopbackServer server(always(packedAnswer(20'000'000)));
    fetch(server.url(), 1'000'000);
    const HttpError error = awaited().error();
    EXPECT_EQ(error.kind, HttpError::Kind::network);
    EXPECT_TRUE(error.description.starts_with("Decompression failed")) << error.description;
}

TEST_F(NetworkHttpClientTest, RedirectToAnotherProtocolIsRefused) {
    LoopbackServer server(redirectTo("ftp://127.0.0.1/"));
    fetch(server.url());
    EXPECT_EQ(awaited().error().kind, HttpError::Kind::network);
}

}  // namespace
}  // namespace valdorn
