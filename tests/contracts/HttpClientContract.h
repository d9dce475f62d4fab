#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/HttpClient.h"

namespace valdorn {

// What every HttpClient does. The fixture has:
//   HttpClient& client();
//   void destroyClient();
//   std::string url();  // of a server that leaves requests waiting at first
//   void answer(const std::string& status, const std::string& body);  // those that wait and later
//                                                                     // ones
//   void breakConnections();  // of requests that wait and of later ones, without an answer
//   void pass(std::chrono::milliseconds);  // by the clock of the time-outs
//   bool runUntil(const std::function<bool()>&);  // lets client and server work
template <typename Fixture>
class HttpClientContract : public testing::Test {
protected:
    using Outcome = Result<std::string, HttpError>;

    // Fetches with a time-out of 10 s; what comes of it is added to `outcomes`.
    std::unique_ptr<HttpRequest> get(const std::string& url, std::size_t maxBodyBytes = 1000) {
        return fixture.client().get({url, std::chrono::seconds{10}, maxBodyBytes}, note());
    }

    HttpClient::Completion note() {
        return [this](Outcome outcome) { outcomes.push_back(std::move(outcome)); };
    }

    bool awaitOutcomes(std::size_t count) {
        return fixture.runUntil([this, count] { return outcomes.size() >= count; });
    }

    void expectBody(const std::string& body) {
        ASSERT_EQ(outcomes.size(), 1U);
        ASSERT_TRUE(outcomes[0].ok()) << outcomes[0].error().description;
        EXPECT_EQ(outcomes[0].value(), body);
    }

    void expectFailure(HttpError::Kind kind) {
        ASSERT_EQ(outcomes.size(), 1U);
        ASSERT_FALSE(outcomes[0].ok()) << outcomes[0].value();
        EXPECT_EQ(outcomes[0].error().kind, kind);
        const std::string& description = outcomes[0].error().description;
        EXPECT_FALSE(description.empty());
        EXPECT_EQ(description.find('\n'), std::string::npos) << description;
    }

    Fixture fixture;
    std::vector<Outcome> outcomes;
};

TYPED_TEST_SUITE_P(HttpClientContract);

using namespace std::chrono_literals;

TYPED_TEST_P(HttpClientContract, HandsTheBodyOverOnceAfterTheCall) {
    this->fixture.answer("200 OK", "hello");
    const auto request = this->get(this->fixture.url());
    EXPECT_TRUE(this->outcomes.empty());
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->fixture.pass(1h);
    this->expectBody("hello");
}

TYPED_TEST_P(HttpClientContract, AnEmptyBodyIsABody) {
    this->fixture.answer("200 OK", "");
    const auto request = this->get(this->fixture.url());
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectBody("");
}

TYPED_TEST_P(HttpClientContract, HandsTheBodyOverWhateverTheStatus) {
    for (const char* const status :
         {"201 Created", "205 Reset", "300 Choices", "301 Moved", "302 Found", "303 Other",
          "305 Proxy", "306 Unused", "307 Elsewhere", "308 Elsewhere", "400 Bad Request",
          "401 Unauthorized", "403 Forbidden", "404 Not Found", "407 Proxy", "418 Teapot",
          "500 Error", "503 Busy", "999 Unknown"}) {
        SCOPED_TRACE(status);
        this->outcomes.clear();
        this->fixture.answer(status, "{\"message\":\"no\"}");
        const auto request = this->get(this->fixture.url());
        EXPECT_TRUE(this->awaitOutcomes(1));
        this->expectBody("{\"message\":\"no\"}");
    }
}

TYPED_TEST_P(HttpClientContract, ASilentServerTimesOutWhenTheTimeIsOver) {
    const auto request = this->get(this->fixture.url());
    this->fixture.pass(9999ms);
    EXPECT_TRUE(this->outcomes.empty());
    this->fixture.pass(1ms);
    this->expectFailure(HttpError::Kind::timeout);
}

TYPED_TEST_P(HttpClientContract, AnAnswerAfterTheTimeOutIsIgnored) {
    const auto late = this->get(this->fixture.url());
    this->fixture.pass(10s);
    this->fixture.answer("200 OK", "hello");
    const auto next = this->get(this->fixture.url());
    EXPECT_TRUE(this->awaitOutcomes(2));
    ASSERT_EQ(this->outcomes.size(), 2U);
    EXPECT_FALSE(this->outcomes[0].ok());
    EXPECT_TRUE(this->outcomes[1].ok());
}

TYPED_TEST_P(HttpClientContract, NoTimeOutMeansNoLimit) {
    const auto request = this->fixture.client().get({this->fixture.url(), 0ms, 1000}, this->note());
    this->fixture.pass(24h);
    EXPECT_TRUE(this->outcomes.empty());
    this->fixture.answer("200 OK", "at last");
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectBody("at last");
}

TYPED_TEST_P(HttpClientContract, ABodyAtTheLimitIsAccepted) {
    this->fixture.answer("200 OK", std::string(1000, 'x'));
    const auto request = this->get(this->fixture.url(), 1000);
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectBody(std::string(1000, 'x'));
}

TYPED_TEST_P(HttpClientContract, ABodyOverTheLimitIsAFailure) {
    this->fixture.answer("200 OK", std::string(1001, 'x'));
    const auto request = this->get(this->fixture.url(), 1000);
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectFailure(HttpError::Kind::tooLarge);
}

TYPED_TEST_P(HttpClientContract, AConnectionThatBreaksIsAFailure) {
    this->fixture.breakConnections();
    const auto request = this->get(this->fixture.url());
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectFailure(HttpError::Kind::network);
}

TYPED_TEST_P(HttpClientContract, AnAddressThatCannotBeFetchedFailsAfterTheCall) {
    for (const char* const url : {"", "nonsense", "/just/a/path", "ftp://127.0.0.1/",
                                  "file:///etc/hostname", "http://", "https:///path"}) {
        SCOPED_TRACE(url);
        this->outcomes.clear();
        const auto request = this->get(url);
        EXPECT_TRUE(this->outcomes.empty());
        EXPECT_TRUE(this->awaitOutcomes(1));
        this->expectFailure(HttpError::Kind::invalidUrl);
    }
}

TYPED_TEST_P(HttpClientContract, DroppingARequestCancelsItAndNoOther) {
    auto dropped = this->get(this->fixture.url());
    const auto kept = this->get(this->fixture.url());
    dropped.reset();
    this->fixture.answer("200 OK", "hello");
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->fixture.pass(1h);
    this->expectBody("hello");
}

TYPED_TEST_P(HttpClientContract, DroppingAtOnceCancelsAnAddressThatCannotBeFetched) {
    this->get("nonsense").reset();
    this->fixture.pass(1h);
    EXPECT_TRUE(this->outcomes.empty());
}

TYPED_TEST_P(HttpClientContract, ACompletionMayDropItsRequest) {
    std::unique_ptr<HttpRequest> request;
    this->fixture.answer("200 OK", "hello");
    request = this->fixture.client().get({this->fixture.url(), 10s, 1000}, [&](auto outcome) {
        request.reset();
        this->outcomes.push_back(std::move(outcome));
    });
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectBody("hello");
}

TYPED_TEST_P(HttpClientContract, ACompletionOfAFailureMayDropItsRequest) {
    std::unique_ptr<HttpRequest> request;
    request = this->fixture.client().get({this->fixture.url(), 10s, 1000}, [&](auto outcome) {
        request.reset();
        this->outcomes.push_back(std::move(outcome));
    });
    this->fixture.pass(10s);
    this->expectFailure(HttpError::Kind::timeout);
}

TYPED_TEST_P(HttpClientContract, ACompletionMayStartTheNextRequest) {
    std::unique_ptr<HttpRequest> next;
    this->fixture.answer("200 OK", "hello");
    const auto first =
        this->fixture.client().get({this->fixture.url(), 10s, 1000},
                                   [&](const auto&) { next = this->get(this->fixture.url()); });
    EXPECT_TRUE(this->awaitOutcomes(1));
    this->expectBody("hello");
}

TYPED_TEST_P(HttpClientContract, TheEndOfTheClientCancelsItsRequests) {
    const auto waiting = this->get(this->fixture.url());
    const auto invalid = this->get("nonsense");
    this->fixture.destroyClient();
    this->fixture.answer("200 OK", "late");
    this->fixture.pass(1h);
    EXPECT_TRUE(this->outcomes.empty());
}

REGISTER_TYPED_TEST_SUITE_P(HttpClientContract, HandsTheBodyOverOnceAfterTheCall,
                            AnEmptyBodyIsABody, HandsTheBodyOverWhateverTheStatus,
                            ASilentServerTimesOutWhenTheTimeIsOver,
                            AnAnswerAfterTheTimeOutIsIgnored, NoTimeOutMeansNoLimit,
                            ABodyAtTheLimitIsAccepted, ABodyOverTheLimitIsAFailure,
                            AConnectionThatBreaksIsAFailure,
                            AnAddressThatCannotBeFetchedFailsAfterTheCall,
                            DroppingARequestCancelsItAndNoOther,
                            DroppingAtOnceCancelsAnAddressThatCannotBeFetched,
                            ACompletionMayDropItsRequest, ACompletionOfAFailureMayDropItsRequest,
                            ACompletionMayStartTheNextRequest, TheEndOfTheClientCancelsItsRequests);

}  // namespace valdorn
