#pragma once

#include <QNetworkAccessManager>
#include <memory>

#include "platform/HttpClient.h"

namespace valdorn {

class InternetConnections;
class MainQueue;

// The HTTP client of Qt: its own headers, the system's certificates, the system's proxy.
// The main queue outlives it.
//
// The proxy is looked up by Qt where get() is called, each time: at once as a rule, but with a proxy
// script (PAC) that must be fetched first the call takes as long as that.
//
// Qt 6.4 takes an HTTP head from the socket byte by byte for as long as there are any, and its thread
// sees no request to stop before the head ends. So what ends without an answer is cut at the socket,
// unless another exchange is under way, which cuts it when it ends so. Qt does not say which sockets
// are its own: it is all TCP connections over the internet protocols that this process has opened
// since the client was made. Nothing else in the program opens any, but for a session bus that is
// reached by TCP and has started anew meanwhile; it is then connected to again.
class NetworkHttpClient : public HttpClient {
public:
    explicit NetworkHttpClient(MainQueue& mainQueue);
    ~NetworkHttpClient() override;

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    MainQueue& mainQueue_;
    const std::shared_ptr<const InternetConnections> connections_;
    QNetworkAccessManager manager_;
};

}  // namespace valdorn
