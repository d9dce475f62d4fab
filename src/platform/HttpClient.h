#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/Result.h"

namespace valdorn {

// What to fetch by GET, with the client's default headers only.
struct HttpQuery {
    std::string url;
    std::chrono::milliseconds timeout{0};  // for the whole exchange; 0 is no limit
    std::size_t maxBodyBytes = 0;          // a longer body is a failure
};

// Why there is no body.
struct HttpError {
    enum class Kind { invalidUrl, network, timeout, tooLarge };
    Kind kind = Kind::network;
    std::string description;  // one readable line
};

// A request under way. Owned by the caller; dropping it cancels, and so does the end of the client,
// which may come first: the completion is then never called. Main thread only.
class HttpRequest {
public:
    HttpRequest() = default;
    HttpRequest(const HttpRequest&) = delete;
    HttpRequest& operator=(const HttpRequest&) = delete;
    virtual ~HttpRequest() = default;
};

// Fetches documents. Main thread only.
class HttpClient {
public:
    // The body of an answer, whatever its status code, or why there is none.
    using Completion = std::function<void(Result<std::string, HttpError>)>;

    HttpClient() = default;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    virtual ~HttpClient() = default;

    // Starts a request. `completion` is called once, on the main thread, never before this has
    // returned, unless the request is dropped; it may drop the request. TLS certificates are
    // verified; redirects to a less secure scheme are not followed.
    [[nodiscard]] virtual std::unique_ptr<HttpRequest> get(const HttpQuery& query,
                                                           Completion completion) = 0;
};

}  // namespace valdorn
