#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/HttpClient.h"
#include "platform/MainQueue.h"

namespace valdorn {

// Answers requests when the test says so. Main thread only; requests are numbered from 0.
class ScriptedHttpClient : public HttpClient {
public:
    // Time-outs and addresses that cannot be fetched fail by themselves, on this queue, which
    // outlives the client. Without a queue the test plays these failures, too.
    explicit ScriptedHttpClient(MainQueue& queue) : queue_(&queue) {}
    ScriptedHttpClient() = default;
    ~ScriptedHttpClient() override;

    std::vector<HttpQuery> queries;  // in call order

    // Completes a request on the calling thread; a body over the request's limit becomes the
    // failure that it is. Does nothing, as a late answer must, when the request was answered or
    // dropped before.
    void answer(std::size_t index, Result<std::string, HttpError> outcome);

    // True when the request was dropped before it was answered.
    bool cancelled(std::size_t index) const { return exchanges_.at(index)->cancelled; }

    // How many requests wait for an answer.
    std::size_t pending() const;

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    struct Exchange {
        std::size_t maxBodyBytes = 0;
        Completion completion;  // empty when answered or cancelled
        bool cancelled = false;
        ScheduledTask failure;  // what comes when the test says nothing

        void complete(Result<std::string, HttpError> outcome);
        void cancel();
    };
    class Request;

    void armFailure(Exchange& exchange, const HttpQuery& query);

    MainQueue* const queue_ = nullptr;
    std::vector<std::shared_ptr<Exchange>> exchanges_;
};

}  // namespace valdorn
