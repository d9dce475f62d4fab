#pragma once

#include <QNetworkAccessManager>

#include "platform/HttpClient.h"

namespace valdorn {

class MainQueue;

// The HTTP client of Qt: its own headers, the system's certificates, the system's proxy.
// The main queue outlives it.
class NetworkHttpClient : public HttpClient {
public:
    explicit NetworkHttpClient(MainQueue& mainQueue);

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    MainQueue& mainQueue_;
    QNetworkAccessManager manager_;
};

}  // namespace valdorn
