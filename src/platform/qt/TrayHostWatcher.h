#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <cstdint>
#include <functional>

namespace valdorn {

// Knows whether a status bar that shows notifier items is on the session bus. It only asks and
// listens, without ever waiting, and does not touch QSystemTrayIcon, which looks for a bar once in
// the life of a process. Main thread only. Without a bus there is no host, and no error.
class TrayHostWatcher : public QObject {
    Q_OBJECT

public:
    // `onChange` is called each time when isHostPresent() has become another.
    TrayHostWatcher(QDBusConnection bus, std::function<void()> onChange);

    // False until the bus has answered.
    bool isHostPresent() const { return present_; }

private Q_SLOTS:
    void ask();

private:
    void onOwnerChanged(const QString& newOwner);
    void setPresent(bool present);

    QDBusConnection bus_;
    const std::function<void()> onChange_;
    QDBusServiceWatcher owners_;
    bool present_ = false;
    std::uint64_t questions_ = 0;  // only the answer to the last one counts
};

}  // namespace valdorn
