#include "ui/LoopbackServer.h"

#include <QString>
#include <utility>

namespace valdorn {

LoopbackServer::LoopbackServer(Answer answer, std::unique_ptr<QTcpServer> server)
    : answer_(std::move(answer)), server_(std::move(server)) {
    QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, server_.get(), [this] {
        while (QTcpSocket* const connection = server_->nextPendingConnection())
            accept(connection);
    });
    server_->listen(QHostAddress::LocalHost);
}

void LoopbackServer::accept(QTcpSocket* connection) {
    QObject::connect(connection, &QTcpSocket::disconnected, server_.get(),
                     [this] { ++disconnections; });
    const auto head = std::make_shared<QByteArray>();
    QObject::connect(connection, &QTcpSocket::readyRead, server_.get(), [this, connection, head] {
        head->append(connection->readAll());
        if (!head->endsWith("\r\n\r\n"))
            return;
        ++requests;
        answer_(*connection, std::exchange(*head, QByteArray()));
    });
}

std::string LoopbackServer::url(const std::string& path, const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(server_->serverPort()) + path;
}

QByteArray httpAnswer(const QByteArray& status, const QByteArray& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

}  // namespace valdorn
