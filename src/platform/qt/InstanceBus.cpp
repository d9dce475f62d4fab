#include "platform/qt/InstanceBus.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <thread>
#include <utility>

#include "platform/ApplicationId.h"
#include "platform/qt/BusCalls.h"

namespace valdorn {

namespace {

// How often a second start looks for the first: soon enough to feel like at once.
constexpr std::chrono::milliseconds retryPause{50};

QString plainBusName() {
    return QLatin1String(applicationId);
}

QString busName(const std::string& key) {
    return plainBusName() + QStringLiteral(".i") + QString::fromStdString(key);
}

QString objectPath() {
    return QLatin1Char('/') + plainBusName().replace(QLatin1Char('.'), QLatin1Char('/'));
}

// What the launcher of the second start has handed over: under Wayland's name and under X11's.
QVariantMap platformData(const std::string& activationToken) {
    if (activationToken.empty())
        return {};
    const QString token = QString::fromStdString(activationToken);
    return {{QStringLiteral("activation-token"), token},
            {QStringLiteral("desktop-startup-id"), token}};
}

std::string activationToken(const QVariantMap& platformData) {
    const QVariant startupId = platformData.value(QStringLiteral("desktop-startup-id"));
    return platformData.value(QStringLiteral("activation-token"), startupId)
        .toString()
        .toStdString();
}

// The instance has not come up yet, or went away while it was asked; or it is just going, and its
// name leads to nothing any more.
bool isWorthARetry(const QDBusMessage& answer) {
    const QDBusError::ErrorType error = QDBusError(answer).type();
    return error == QDBusError::ServiceUnknown || error == QDBusError::UnknownObject ||
           error == QDBusError::NoReply ||
           answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

QDBusMessage callToInstance(const std::string& key, const QString& interface,
                            const QString& method) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(busName(key), objectPath(), interface, method);
    call.setAutoStartService(false);
    return call;
}

bool isAnswered(const QDBusConnection& bus, const QDBusMessage& call,
                std::chrono::milliseconds patience, const std::function<bool()>& hasEnded) {
    const QDeadlineTimer end(patience);
    while (bus.isConnected()) {
        const int left = static_cast<int>(std::max<qint64>(end.remainingTime(), 1));
        const QDBusMessage answer = bus.call(call, QDBus::Block, left);
        if (answer.type() == QDBusMessage::ReplyMessage)
            return true;
        if (!isWorthARetry(answer) || hasEnded() || end.hasExpired())
            return false;
        std::this_thread::sleep_for(retryPause);
    }
    return false;
}

}  // namespace

InstanceBus::InstanceBus(QDBusConnection bus, const std::string& key, Requests requests)
    : bus_(std::move(bus)), name_(busName(key)), requests_(std::move(requests)) {
    if (!bus_.isConnected())
        return;
    bus_.registerObject(objectPath(), this, QDBusConnection::ExportAllSlots);
    constexpr unsigned doNotQueue = 4;
    constexpr unsigned waitForTurn = 0;
    bus_.send(BusCalls::toBus("RequestName") << name_ << doNotQueue);
    bus_.send(BusCalls::toBus("RequestName") << plainBusName() << waitForTurn);
}

InstanceBus::~InstanceBus() {
    leave();
}

void InstanceBus::leave() {
    if (std::exchange(hasLeft_, true) || !bus_.isConnected())
        return;
    bus_.send(BusCalls::toBus("ReleaseName") << plainBusName());
    bus_.send(BusCalls::toBus("ReleaseName") << name_);
    bus_.unregisterObject(objectPath());
}

bool InstanceBus::activateRunningInstance(const QDBusConnection& bus, const std::string& key,
                                          const std::string& activationToken,
                                          std::chrono::milliseconds patience,
                                          const std::function<bool()>& hasEnded) {
    const QDBusMessage call = callToInstance(key, QStringLiteral("org.freedesktop.Application"),
                                             QStringLiteral("Activate"))
                              << platformData(activationToken);
    return isAnswered(bus, call, patience, hasEnded);
}

bool InstanceBus::awaitRunningInstance(const QDBusConnection& bus, const std::string& key,
                                       std::chrono::milliseconds patience,
                                       const std::function<bool()>& hasEnded) {
    const QDBusMessage call =
        callToInstance(key, QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    return isAnswered(bus, call, patience, hasEnded);
}

// What had come before the names were given back is still delivered.
bool InstanceBus::refuseWhenGone() {
    if (hasLeft_)
        sendErrorReply(QDBusError::UnknownObject, QStringLiteral("This instance is ending"));
    return hasLeft_;
}

void InstanceBus::Activate(const QVariantMap& platformData) {
    if (!refuseWhenGone())
        requests_.activate(activationToken(platformData));
}

void InstanceBus::Open(const QStringList&, const QVariantMap& platformData) {
    Activate(platformData);
}

void InstanceBus::ActivateAction(const QString& name, const QVariantList&,
                                 const QVariantMap& platformData) {
    if (refuseWhenGone())
        return;
    const auto action = requests_.actions.find(name.toStdString());
    if (action == requests_.actions.end())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no action ") + name);
    else
        action->second(activationToken(platformData));
}

}  // namespace valdorn
