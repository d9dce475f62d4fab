#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/HttpClient.h"

namespace valdorn {

// Answers requests when the test says so. Main thread only; requests are numbered from 0.
class ScriptedHttpClient : public HttpClient {
public:
    std::vector<HttpQuery> queries;  // in call order

    // Completes a request on the calling thread. Does nothing, as a late answer must, when the
    // request was answered or dropped before.
    void answer(std::size_t index, Result<std::string, HttpError> outcome);

    // True when the request was dropped before it was answered.
    bool cancelled(std::size_t index) const { return exchanges_.at(index)->cancelled; }

    // How many requests wait for an answer.
    std::size_t pending() const;

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    struct Exchange {
        Completion completion;  // empty when answered or cancelled
        bool cancelled = false;
    };
    class Request;

    std::vector<std::shared_ptr<Exchange>> exchanges_;
};

}  // namespace valdorn
