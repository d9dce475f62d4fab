#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>
#include <memory>
#include <string>

namespace valdorn {

// A server on the loopback interface that lets the test write each answer byte by byte.
class LoopbackServer {
public:
    // Called with the connection and the request's head, once per request.
    using Answer = std::function<void(QTcpSocket& connection, const QByteArray& head)>;

    // Takes a server that makes its own kind of connection (TLS), or an ordinary one.
    explicit LoopbackServer(Answer answer,
                            std::unique_ptr<QTcpServer> server = std::make_unique<QTcpServer>());

    bool isListening() const { return server_->isListening(); }
    std::string url(const std::string& path = "/", const std::string& scheme = "http") const;

    int requests = 0;
    int disconnections = 0;

private:
    void accept(QTcpSocket* connection);

    Answer answer_;
    std::unique_ptr<QTcpServer> server_;
};

// A server for LoopbackServer that speaks TLS with a certificate that nobody has signed. It says that
// it knows HTTP/2 as well.
std::unique_ptr<QTcpServer> selfSignedServer();

// While it lives, this process trusts that certificate, which is one for the address 127.0.0.1.
class TrustInTheServer {
public:
    TrustInTheServer();
    TrustInTheServer(const TrustInTheServer&) = delete;
    TrustInTheServer& operator=(const TrustInTheServer&) = delete;
    ~TrustInTheServer();

private:
    const QSslConfiguration before_;
};

// Sends whoever asks to that address.
LoopbackServer::Answer redirectTo(const std::string& url);

// Answers each request with these bytes and closes the connection.
LoopbackServer::Answer always(const QByteArray& bytes);

// Fails the test where the head has a header that a bare HTTP client does not send by itself.
void expectOnlyDefaultHeaders(const QByteArray& head);

// An answer with a status line, its length and the body, after which the connection is closed.
QByteArray httpAnswer(const QByteArray& status, const QByteArray& body);

}  // namespace valdorn
