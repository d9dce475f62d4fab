#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace valdorn {

// The running instance's place on the session bus, where a second start asks it to show itself, and
// where the desktop entry's actions reach it.
//
// There is one name per home folder, so that second starts of different homes do not meet. The
// actions know of no homes: they go to the plain application id, which belongs to the instance that
// asked for it first, and then to the next of those that still run.
//
// Everything but activateRunningInstance() is asynchronous and on the main thread. Without a bus
// nothing happens: the second start then says that it could not reach the first.
class InstanceBus : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    // Called with the activation token that came along, or with an empty one.
    using OnActivate = std::function<void(const std::string& activationToken)>;

    // What others may ask for. An action is asked for by its name.
    struct Requests {
        OnActivate activate;
        std::map<std::string, OnActivate> actions = {};
    };

    // `key` stands for the home folder: 16 hexadecimal digits. The object is there before the names
    // are, so that nobody finds the one without the other.
    InstanceBus(QDBusConnection bus, const std::string& key, Requests requests);

    // Leaves, if that has not been done.
    ~InstanceBus() override;

    // Gives the names back. From now on whoever still asks is told that there is nobody; may be
    // called while a request is served.
    void leave();

    // For a second start, which needs no more than a QCoreApplication: blocks until the running
    // instance has been told, and returns true; or until it is clear that the bus cannot reach
    // it, at the latest after `patience`. The first instance may still be starting, so a name
    // that nobody owns yet is worth waiting for; or it may be about to end, so `hasEnded` is asked
    // now and then, and a true answer ends the wait.
    static bool activateRunningInstance(const QDBusConnection& bus, const std::string& key,
                                        const std::string& activationToken,
                                        std::chrono::milliseconds patience,
                                        const std::function<bool()>& hasEnded);

    // The same for a second start that the bus has made, to hand a request over: the bus does so
    // itself as soon as the running instance is there, which is only waited for.
    static bool awaitRunningInstance(const QDBusConnection& bus, const std::string& key,
                                     std::chrono::milliseconds patience,
                                     const std::function<bool()>& hasEnded);

public Q_SLOTS:
    // The interface org.freedesktop.Application.
    void Activate(const QVariantMap& platformData);
    // We have no documents: opening some shows the program.
    void Open(const QStringList& uris, const QVariantMap& platformData);
    // Actions take no parameter; a name that is none of theirs is refused.
    void ActivateAction(const QString& name, const QVariantList& parameter,
                        const QVariantMap& platformData);

private:
    bool refuseWhenGone();

    QDBusConnection bus_;
    const QString name_;
    bool hasLeft_ = false;
    const Requests requests_;
};

}  // namespace valdorn
