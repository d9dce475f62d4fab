#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <vector>

#include "ui/PrivateBus.h"

namespace valdorn {

// Another program on the bus, which calls one object of a service and hears its signals.
class BusCaller : public QObject {
    Q_OBJECT

public:
    BusCaller(PrivateBus& bus, const QString& service, const QString& path,
              const QString& interface);

    // The answer, or the error. Events go on meanwhile.
    QDBusMessage call(const char* method, const QVariantList& arguments = {});

    // As the interface of properties tells it.
    QVariant property(const QString& name);
    QVariantMap properties();
    QString introspection();
    // The answer to whoever wants to change one.
    QDBusMessage setProperty(const QString& name, const QVariant& value);

    // The signals so far, after all that was sent before now.
    const std::vector<QDBusMessage>& signalsSoFar();
    int count(const QString& signal);

private Q_SLOTS:
    void onSignal(const QDBusMessage& signal) { signals_.push_back(signal); }

private:
    QDBusMessage callInterface(const QString& interface, const QString& method,
                               const QVariantList& arguments);

    QDBusConnection connection_;
    const QString service_;
    const QString path_;
    const QString interface_;
    std::vector<QDBusMessage> signals_;
};

}  // namespace valdorn
