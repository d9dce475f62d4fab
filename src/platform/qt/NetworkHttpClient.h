#pragma once

#include <QNetworkAccessManager>

#include "platform/HttpClient.h"

namespace valdorn {

class MainQueue;

// The HTTP client of Qt: its own headers, the system's certificates, the system's proxy.
// The main queue outlives it.
//
// The proxy is looked up by Qt where get() is called, each time: at once as a rule, but with a proxy
// script (PAC) that must be fetched first the call takes as long as that.
class NetworkHttpClient : public HttpClient {
public:
    explicit NetworkHttpClient(MainQueue& mainQueue);

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    MainQueue& mainQueue_;
    QNetworkAccessManager manager_;
};

}  // namespace valdorn
