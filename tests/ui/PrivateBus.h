#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>

namespace valdorn {

// A session bus of the test's own, ended with it.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // Another participant: each connection has its own unique name.
    QDBusConnection connect();

    // Ends a participant, as if its process had ended.
    void disconnect(const QDBusConnection& connection);

private:
    QProcess daemon_;
    QString address_;
    QStringList connections_;
};

}  // namespace valdorn
