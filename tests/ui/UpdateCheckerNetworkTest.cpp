#include <QHostAddress>
#include <QUrl>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/qt/NetworkHttpClient.h"
#include "support/VirtualMainQueue.h"
#include "ui/EventLoop.h"
#include "ui/LoopbackServer.h"
#include "update/ReleaseService.h"
#include "update/UpdateChecker.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

const QByteArray release = R"({"tag_name": "v0.2.11", "name": "A release"})";

// The checker against a real connection to a server of the test's own.
class UpdateCheckerNetworkTest : public testing::Test {
protected:
    // Checks with a service that answers so.
    void checkAgainst(LoopbackServer::Answer answer,
                      std::unique_ptr<QTcpServer> transport = std::make_unique<QTcpServer>(),
                      const std::string& scheme = "http") {
        checker.reset();
        server = std::make_unique<LoopbackServer>(std::move(answer), std::move(transport));
        checker = std::make_unique<UpdateChecker>(client, server->url("/", scheme));
        checker->check();
    }

    // The exchange is over when nothing waits for its time-out any more.
    bool isOver() const { return queue.pending() == 0; }

    void expectTag(const std::string& tag) {
        EXPECT_TRUE(runUntil([this] { return isOver(); }));
        EXPECT_EQ(checker->latest(), tag);
    }

    void expectNothing() {
        EXPECT_TRUE(runUntil([this] { return isOver(); }));
        EXPECT_EQ(checker->latest(), std::nullopt);
    }

    VirtualMainQueue queue;
    NetworkHttpClient client{queue};
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<UpdateChecker> checker;
};

TEST_F(UpdateCheckerNetworkTest, TheBuiltInServiceIsAnHttpsAddress) {
    const QUrl url(QString::fromStdString(ReleaseService::builtIn()), QUrl::StrictMode);
    EXPECT_TRUE(url.isValid()) << ReleaseService::builtIn();
    EXPECT_EQ(url.scheme(), QStringLiteral("https"));
    EXPECT_FALSE(url.host().isEmpty());
    EXPECT_FALSE(url.hasQuery() || url.hasFragment());
    EXPECT_TRUE(url.userInfo().isEmpty());
}

TEST_F(UpdateCheckerNetworkTest, TheTagIsFetchedByABareGet) {
    QByteArray seen;
    checkAgainst([&seen](QTcpSocket& connection, const QByteArray& head) {
        seen = head;
        always(httpAnswer("200 OK", release))(connection, head);
    });
    expectTag("v0.2.11");
    EXPECT_EQ(server->requests, 1);
    EXPECT_TRUE(seen.startsWith("GET /api/v1/repos/gitea/runner/releases/latest HTTP/1.1\r\n"))
        << seen.toStdString();
    expectOnlyDefaultHeaders(seen);
}

TEST_F(UpdateCheckerNetworkTest, TheStatusOfTheAnswerDoesNotMatter) {
    for (const char* const status : {"201 Created", "404 Not Found", "500 Error"}) {
        SCOPED_TRACE(status);
        checkAgainst(always(httpAnswer(status, release)));
        expectTag("v0.2.11");
    }
}

TEST_F(UpdateCheckerNetworkTest, AnAnswerWithoutATagIsNoAnswer) {
    const std::pair<const char*, const char*> answers[] = {
        {"500 Internal Server Error", "<html><h1>500</h1></html>"},
        {"404 Not Found", R"({"message": "not found"})"},
        {"200 OK", ""},
        {"204 No Content", ""},
        {"200 OK", "v0.2.11"},
        {"200 OK", R"({"tag_name": "v0.2.11")"},
        {"200 OK", R"([{"tag_name": "v0.2.11"}])"},
        {"200 OK", R"({"tag_name": 7})"},
        {"200 OK", R"({"tag_name": null})"},
        {"200 OK", R"({"tag_name": true})"},
        {"200 OK", R"({"tag_name": ["v0.2.11"]})"},
        {"200 OK", R"({"tag_name": {"name": "v0.2.11"}})"},
    };
    for (const auto& [status, body] : answers) {
        SCOPED_TRACE(body);
        checkAgainst(always(httpAnswer(status, body)));
        expectNothing();
        EXPECT_EQ(server->requests, 1);
    }
}

TEST_F(UpdateCheckerNetworkTest, ACutOffReleaseIsNoAnswer) {
    // Whole as JSON, so that only the missing rest tells.
    checkAgainst(always("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + release));
    expectNothing();
}

TEST_F(UpdateCheckerNetworkTest, AConnectionThatBreaksIsNoAnswer) {
    checkAgainst([](QTcpSocket& connection, const QByteArray&) { connection.abort(); });
    expectNothing();
}

TEST_F(UpdateCheckerNetworkTest, AnEndlessAnswerIsGivenUp) {
    checkAgainst([](QTcpSocket& connection, const QByteArray&) {
        QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection, [&connection] {
            if (connection.bytesToWrite() == 0)
                connection.write(QByteArray(65536, '['));
        });
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
    });
    expectNothing();
    EXPECT_TRUE(runUntil([this] { return server->disconnections == 1; }));
}

TEST_F(UpdateCheckerNetworkTest, ALongReleaseWithinTheLimitIsTaken) {
    const QByteArray notes(1'000'000, 'n');
    checkAgainst(
        always(httpAnswer("200 OK", R"({"body": ")" + notes + R"(", "tag_name": "v0.2.11"})")));
    expectTag("v0.2.11");
}

TEST_F(UpdateCheckerNetworkTest, ASlowServiceIsGivenUpAfterTenSeconds) {
    checkAgainst([](QTcpSocket& connection, const QByteArray&) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{");
    });
    EXPECT_TRUE(runUntil([this] { return server->requests == 1; }));
    queue.advance(9999ms);
    runReadyEvents();
    EXPECT_FALSE(isOver());
    queue.advance(1ms);
    expectNothing();
    EXPECT_TRUE(runUntil([this] { return server->disconnections == 1; }));
}

TEST_F(UpdateCheckerNetworkTest, AMovedServiceIsFollowed) {
    checkAgainst([](QTcpSocket& connection, const QByteArray& head) {
        const bool moved = head.startsWith("GET /api/");
        always(moved ? QByteArray("HTTP/1.1 301 Moved Permanently\r\nLocation: /new/latest\r\n"
                                  "Content-Length: 0\r\nConnection: close\r\n\r\n")
                     : httpAnswer("200 OK", release))(connection, head);
    });
    expectTag("v0.2.11");
    EXPECT_EQ(server->requests, 2);
}

TEST_F(UpdateCheckerNetworkTest, AnAnswerOfAServiceThatNobodyVouchesForIsRefused) {
    checkAgainst(always(httpAnswer("200 OK", release)), selfSignedServer(), "https");
    expectNothing();
    EXPECT_EQ(server->requests, 0);
}

TEST_F(UpdateCheckerNetworkTest, AServiceThatIsBusyIsAskedAgainAtTheNextCheck) {
    checkAgainst(always(httpAnswer("503 Service Unavailable", "later")));
    expectNothing();
    checker->check();
    expectNothing();
    EXPECT_EQ(server->requests, 2);
}

TEST_F(UpdateCheckerNetworkTest, DestroyingTheCheckerClosesTheConnection) {
    checkAgainst([](QTcpSocket&, const QByteArray&) {});
    EXPECT_TRUE(runUntil([this] { return server->requests == 1; }));
    checker.reset();
    EXPECT_TRUE(isOver());
    EXPECT_TRUE(runUntil([this] { return server->disconnections == 1; }));
}

}  // namespace
}  // namespace valdorn
