#include <optional>

#include <gtest/gtest.h>

#include "contracts/HttpClientContract.h"
#include "support/ScriptedHttpClient.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

using Outcome = Result<std::string, HttpError>;

// Plays the server by answering what waits.
class ScriptedServer {
public:
    HttpClient& client() { return *client_; }
    void destroyClient() { client_.reset(); }
    std::string url() const { return "http://gitea.test/"; }
    void answer(const std::string&, const std::string& body) { answer_ = body; }
    void breakConnections() { answer_ = HttpError{HttpError::Kind::network, "Closed"}; }
    void pass(std::chrono::milliseconds time) {
        queue_.advance(time);
        answerWaiting();
    }
    bool runUntil(const std::function<bool()>& condition) {
        for (int rounds = 0; rounds < 10 && !condition(); ++rounds)
            pass(std::chrono::milliseconds{0});
        return condition();
    }

private:
    void answerWaiting() {
        for (std::size_t i = 0; answer_ && client_ && i < client_->queries.size(); ++i)
            client_->answer(i, *answer_);
    }

    VirtualMainQueue queue_;
    std::optional<ScriptedHttpClient> client_{queue_};
    std::optional<Outcome> answer_;  // the server is silent without
};

INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, HttpClientContract, ScriptedServer);

class ScriptedHttpClientTest : public testing::Test {
protected:
    std::unique_ptr<HttpRequest> get(const std::string& url) {
        return client.get({.url = url, .maxBodyBytes = 10}, [this](const Outcome& outcome) {
            log += outcome.ok() ? outcome.value() : outcome.error().description;
        });
    }

    ScriptedHttpClient client;
    std::string log;
};

TEST_F(ScriptedHttpClientTest, AnswersInAnyOrderOnce) {
    const auto first = get("one");
    const auto second = get("two");
    ASSERT_EQ(client.queries.size(), 2U);
    EXPECT_EQ(client.queries[1].url, "two");
    EXPECT_EQ(client.pending(), 2U);
    EXPECT_EQ(log, "");
    client.answer(1, Outcome("b"));
    client.answer(0, Outcome(HttpError{HttpError::Kind::timeout, "late"}));
    client.answer(0, Outcome("again"));
    EXPECT_EQ(log, "blate");
    EXPECT_EQ(client.pending(), 0U);
    EXPECT_FALSE(client.cancelled(0));
}

TEST_F(ScriptedHttpClientTest, TellsThatARequestWasDropped) {
    auto request = get("one");
    EXPECT_FALSE(client.cancelled(0));
    request.reset();
    EXPECT_TRUE(client.cancelled(0));
}

TEST_F(ScriptedHttpClientTest, WithoutAQueueTheTestPlaysEveryFailure) {
    VirtualMainQueue queue;
    ScriptedHttpClient own(queue);
    const auto fails = own.get({.url = "nonsense"}, [](const Outcome&) {});
    const auto waits = get("nonsense");
    queue.advance(std::chrono::hours{1});
    EXPECT_EQ(own.pending(), 0U);
    EXPECT_EQ(client.pending(), 1U);
}

}  // namespace
}  // namespace valdorn
