#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

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

    // One that is called so in this process; not connected while the bus has ended.
    QDBusConnection connect(const QString& name);

    // Ends a participant, as if its process had ended.
    void disconnect(const QDBusConnection& connection);

    // Takes the bus away from all of them, and lets another one begin at the same address.
    void end();
    void begin();

private:
    const QTemporaryDir folder_;
    const QString address_ = QStringLiteral("unix:path=") + folder_.filePath(QStringLiteral("bus"));
    QProcess daemon_;
    QStringList connections_;
};

}  // namespace valdorn
