#include "support/ScriptedHttpClient.h"

#include <algorithm>
#include <utility>

namespace valdorn {

class ScriptedHttpClient::Request : public HttpRequest {
public:
    explicit Request(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}

    ~Request() override {
        exchange_->cancelled = exchange_->cancelled || exchange_->completion != nullptr;
        exchange_->completion = nullptr;
    }

private:
    const std::shared_ptr<Exchange> exchange_;
};

void ScriptedHttpClient::answer(std::size_t index, Result<std::string, HttpError> outcome) {
    // Taken out first: the completion may drop the request.
    if (const Completion completion = std::exchange(exchanges_.at(index)->completion, nullptr))
        completion(std::move(outcome));
}

std::size_t ScriptedHttpClient::pending() const {
    return static_cast<std::size_t>(
        std::count_if(exchanges_.begin(), exchanges_.end(),
                      [](const auto& exchange) { return exchange->completion != nullptr; }));
}

std::unique_ptr<HttpRequest> ScriptedHttpClient::get(const HttpQuery& query,
                                                     Completion completion) {
    queries.push_back(query);
    auto exchange = std::make_shared<Exchange>();
    exchange->completion = std::move(completion);
    exchanges_.push_back(exchange);
    return std::make_unique<Request>(std::move(exchange));
}

}  // namespace valdorn
