#pragma once

#include <QNetworkAccessManager>
#include <memory>

#include "platform/HttpClient.h"

namespace valdorn {

class ExchangesUnderWay;
class MainQueue;

// The HTTP client of Qt: its own headers, the system's certificates, the system's proxy.
// The main queue outlives it.
//
// The proxy is looked up by Qt where get() is called, each time: at once as a rule, but with a proxy
// script (PAC) that must be fetched first the call takes as long as that.
//
// Qt 6.4 takes an HTTP head from the socket byte by byte for as long as there are any, and its one
// thread sees no request to stop before the head ends, nor anything else. So what ends without an
// answer is cut at the socket (ExchangesUnderWay), but never what another exchange may be using.
// Qt does not say which sockets are its own: they are sought among the TCP connections over the
// internet protocols that this process has opened since the client was made. Others are a session bus
// that is reached by TCP and has started anew meanwhile, which is then connected to again; and, with
// an X server reached by TCP, the end of startup notification, which is opened and closed within one
// call on the main thread, where the cut is made as well: the two never meet.
class NetworkHttpClient : public HttpClient {
public:
    explicit NetworkHttpClient(MainQueue& mainQueue);
    ~NetworkHttpClient() override;

    std::unique_ptr<HttpRequest> get(const HttpQuery& query, Completion completion) override;

private:
    MainQueue& mainQueue_;
    const std::shared_ptr<ExchangesUnderWay> underWay_;
    QNetworkAccessManager manager_;
};

}  // namespace valdorn
