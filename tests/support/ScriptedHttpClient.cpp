#include "support/ScriptedHttpClient.h"

#include <algorithm>
#include <utility>

namespace valdorn {

namespace {

// An address with a host, over a protocol that has bodies to fetch.
bool isFetchable(const std::string& url) {
    for (const std::string scheme : {"http://", "https://"}) {
        if (url.rfind(scheme, 0) == 0)
            return url.size() > scheme.size() && url[scheme.size()] != '/';
    }
    return false;
}

}  // namespace

void ScriptedHttpClient::Exchange::complete(Result<std::string, HttpError> outcome) {
    failure.cancel();
    // Taken out first: the completion may drop the request.
    const Completion told = std::exchange(completion, nullptr);
    if (told && outcome.ok() && outcome.value().size() > maxBodyBytes)
        told(HttpError{HttpError::Kind::tooLarge, "The answer is too long"});
    else if (told)
        told(std::move(outcome));
}

void ScriptedHttpClient::Exchange::cancel() {
    cancelled = cancelled || completion != nullptr;
    completion = nullptr;
    failure.cancel();
}

class ScriptedHttpClient::Request : public HttpRequest {
public:
    explicit Request(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}
    ~Request() override { exchange_->cancel(); }

private:
    const std::shared_ptr<Exchange> exchange_;
};

ScriptedHttpClient::~ScriptedHttpClient() {
    for (const auto& exchange : exchanges_)
        exchange->cancel();
}

void ScriptedHttpClient::answer(std::size_t index, Result<std::string, HttpError> outcome) {
    exchanges_.at(index)->complete(std::move(outcome));
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
    exchange->maxBodyBytes = query.maxBodyBytes;
    exchange->completion = std::move(completion);
    armFailure(*exchange, query);
    exchanges_.push_back(exchange);
    return std::make_unique<Request>(std::move(exchange));
}

void ScriptedHttpClient::armFailure(Exchange& exchange, const HttpQuery& query) {
    if (!queue_)
        return;
    const auto failWith = [&exchange](HttpError::Kind kind, const char* description) {
        return [&exchange, error = HttpError{kind, description}] { exchange.complete(error); };
    };
    if (!isFetchable(query.url)) {
        exchange.failure =
            queue_->after(std::chrono::milliseconds{0},
                          failWith(HttpError::Kind::invalidUrl, "The address cannot be fetched"));
    } else if (query.timeout.count() > 0) {
        exchange.failure = queue_->after(
            query.timeout,
            failWith(HttpError::Kind::timeout, "The server takes too long to answer"));
    }
}

}  // namespace valdorn
