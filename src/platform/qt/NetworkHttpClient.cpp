#include "platform/qt/NetworkHttpClient.h"

#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QUrl>
#include <utility>

#include "platform/MainQueue.h"
#include "platform/qt/ExchangesUnderWay.h"

namespace valdorn {

namespace {

// Only so much waits inside Qt to be read, so that the limit on the body holds for memory as well.
constexpr qint64 readBufferBytes = qint64{64} * 1024;

QUrl parse(const std::string& url) {
    const QUrl parsed(QString::fromStdString(url), QUrl::StrictMode);
    const bool fetchable =
        parsed.scheme() == QLatin1String("http") || parsed.scheme() == QLatin1String("https");
    return fetchable && !parsed.host().isEmpty() ? parsed : QUrl();
}

QNetworkRequest makeRequest(const QUrl& url) {
    QNetworkRequest request(url);
    // Qt keeps nothing of an answer with the status of a redirection that names no place to go to.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    // Otherwise exchanges with one server share a connection, and none could be cut for one of them.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

// Qt counts answers like 404 among the errors, after those of the network and of proxies; but for
// 407, which a server may give as well as a proxy.
bool isAnswer(const QNetworkReply& reply) {
    constexpr int lastProxyError = QNetworkReply::UnknownProxyError;
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return reply.error() == QNetworkReply::NoError ||
           (status == 407 && reply.error() == QNetworkReply::ProxyAuthenticationRequiredError) ||
           (status >= 400 && reply.error() > lastProxyError);
}

// Where the answer says to go instead; empty where it does not.
QUrl redirection(const QNetworkReply& reply) {
    const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    return target.isEmpty() ? QUrl() : reply.url().resolved(target);
}

// As Qt's own.
constexpr int maxRedirections = 50;

bool isLessSafe(const QUrl& url, const QUrl& than) {
    return than.scheme() == QLatin1String("https") && url.scheme() != QLatin1String("https");
}

// Qt does not always notice that the connection was closed before the end of the body. The length
// tells, unless it is that of a compressed body, which Qt has unpacked.
bool isCutOff(const QNetworkReply& reply, std::size_t bodyBytes) {
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() && !reply.hasRawHeader("Content-Encoding") &&
           bodyBytes < length.toULongLong();
}

// One GET under way.
class Exchange : public QObject, public HttpRequest {
public:
    Exchange(const HttpQuery& query, HttpClient::Completion completion,
             std::shared_ptr<ExchangesUnderWay> underWay)
        : maxBodyBytes_(query.maxBodyBytes),
          completion_(std::move(completion)),
          underWay_(std::move(underWay)) {}
    ~Exchange() override { release(); }

    void start(MainQueue& queue, QNetworkAccessManager& manager, const HttpQuery& query) {
        // The end of the client takes the reply with it; the time-out must not speak up after that.
        connect(&manager, &QObject::destroyed, this, [this] { outcome_.cancel(); });
        const QUrl url = parse(query.url);
        if (url.isEmpty()) {
            outcome_ = queue.after(std::chrono::milliseconds{0}, [this] {
                fail(HttpError::Kind::invalidUrl, "The address cannot be fetched");
            });
            return;
        }
        if (query.timeout.count() > 0) {
            outcome_ = queue.after(query.timeout, [this] {
                fail(HttpError::Kind::timeout, "The server takes too long to answer");
            });
        }
        number_ = underWay_->begin();
        follow(manager.get(makeRequest(url)));
    }

private:
    void follow(QNetworkReply* reply) {
        reply_ = reply;
        reply->setReadBufferSize(readBufferBytes);
        connect(reply, &QNetworkReply::readyRead, this, [this] { read(); });
        connect(reply, &QNetworkReply::finished, this, [this] { finish(); });
    }

    void redirect(const QUrl& target) {
        const QUrl next = parse(target.toString(QUrl::FullyEncoded).toStdString());
        if (next.isEmpty() || isLessSafe(next, reply_->url()) || ++redirections_ > maxRedirections)
            return fail(HttpError::Kind::network, "The server leads nowhere");
        QNetworkReply* const reply = reply_.data();
        reply->disconnect(this);
        reply->deleteLater();
        follow(reply->manager()->get(makeRequest(next)));
    }

    // False when the body has become too long; the exchange is then over.
    bool read() {
        const QByteArray bytes = reply_->readAll();
        if (!redirection(*reply_).isEmpty())
            return true;  // what it says meanwhile is for nobody
        body_ += bytes.toStdString();
        if (body_.size() <= maxBodyBytes_)
            return true;
        fail(HttpError::Kind::tooLarge, "The answer is too long");
        return false;
    }

    void finish() {
        if (!isAnswer(*reply_))
            return fail(HttpError::Kind::network, reply_->errorString().toStdString());
        if (!read())
            return;
        if (const QUrl target = redirection(*reply_); !target.isEmpty())
            return redirect(target);
        if (isCutOff(*reply_, body_.size()))
            return fail(HttpError::Kind::network, "The connection was closed too early");
        complete(std::move(body_));
    }

    void fail(HttpError::Kind kind, std::string description) {
        complete(HttpError{kind, std::move(description)});
    }

    // The last act: the completion may destroy this.
    void complete(Result<std::string, HttpError> result) {
        release();
        std::exchange(completion_, nullptr)(std::move(result));
    }

    void release() {
        outcome_.cancel();
        QNetworkReply* const reply = reply_.data();
        if (!reply)
            return;
        reply_ = nullptr;
        const bool isAbandoned = reply->isRunning();
        reply->disconnect(this);
        // One that has failed and is about to say that it has finished takes no second error.
        if (reply->error() == QNetworkReply::NoError)
            reply->abort();
        reply->deleteLater();
        using End = ExchangesUnderWay::End;
        underWay_->end(number_, isAbandoned ? End::abandoned : End::byItself);
    }

    const std::size_t maxBodyBytes_;
    HttpClient::Completion completion_;
    std::string body_;
    int redirections_ = 0;
    const std::shared_ptr<ExchangesUnderWay> underWay_;  // the client may be gone
    ExchangesUnderWay::Number number_ = 0;
    ScheduledTask outcome_;          // the failure that comes when nothing else does
    QPointer<QNetworkReply> reply_;  // belongs to the manager until it is released
};

}  // namespace

NetworkHttpClient::NetworkHttpClient(MainQueue& mainQueue)
    : mainQueue_(mainQueue), underWay_(std::make_shared<ExchangesUnderWay>()) {
    // Otherwise Qt asks nobody whether there is a proxy.
    QNetworkProxyFactory::setUseSystemConfiguration(true);
}

// Qt waits for its thread, five seconds at most.
NetworkHttpClient::~NetworkHttpClient() {
    underWay_->endAll();
}

std::unique_ptr<HttpRequest> NetworkHttpClient::get(const HttpQuery& query, Completion completion) {
    // Of what has been cut Qt (6.4) may keep a connection that it takes for busy, and asks a server by
    // six at the most. It forgets them with its thread, which it waits for: it has nothing to do now.
    if (underWay_->takeCutOff())
        manager_.clearConnectionCache();
    auto exchange = std::make_unique<Exchange>(query, std::move(completion), underWay_);
    exchange->start(mainQueue_, manager_, query);
    return exchange;
}

}  // namespace valdorn
