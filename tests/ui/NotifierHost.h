#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include "ui/PrivateBus.h"

namespace valdorn {

// Plays the desktop's service with which items register.
class NotifierHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
    explicit NotifierHost(PrivateBus& bus);
    ~NotifierHost() override;  // as a panel ends

    QStringList registered;  // as the items called themselves, in order

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { registered.append(service); }

private:
    PrivateBus& bus_;
    QDBusConnection connection_ = bus_.connect();
};

}  // namespace valdorn
