#include <gtest/gtest.h>

#include "support/ScriptedHttpClient.h"

namespace valdorn {
namespace {

using Outcome = Result<std::string, HttpError>;

class ScriptedHttpClientTest : public testing::Test {
protected:
    std::unique_ptr<HttpRequest> get(const std::string& url) {
        return client.get({.url = url}, [this](const Outcome& outcome) {
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

TEST_F(ScriptedHttpClientTest, ADroppedRequestIsNeverAnswered) {
    auto request = get("one");
    EXPECT_FALSE(client.cancelled(0));
    request.reset();
    EXPECT_TRUE(client.cancelled(0));
    client.answer(0, Outcome("late"));
    EXPECT_EQ(log, "");
}

TEST_F(ScriptedHttpClientTest, ACompletionMayDropItsRequest) {
    std::unique_ptr<HttpRequest> request;
    request = client.get({.url = "one"}, [&](const Outcome&) {
        request.reset();
        log += "done";
    });
    client.answer(0, Outcome(""));
    EXPECT_EQ(log, "done");
    EXPECT_FALSE(client.cancelled(0));
}

}  // namespace
}  // namespace valdorn
