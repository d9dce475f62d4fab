#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <tuple>
#include <vector>

#include "platform/MenuModel.h"
#include "platform/qt/BusStructure.h"

namespace valdorn {

// What the interface of MenuOnBus passes around. Entries are named by numbers; 0 is the menu itself.

struct MenuEntryOnBus {
    int id = 0;
    QVariantMap properties;
    static constexpr auto fields() {
        return std::tuple(&MenuEntryOnBus::id, &MenuEntryOnBus::properties);
    }
};

struct MenuLayoutOnBus {
    int id = 0;
    QVariantMap properties;
    QVariantList children;  // each a MenuLayoutOnBus
    static constexpr auto fields() {
        return std::tuple(&MenuLayoutOnBus::id, &MenuLayoutOnBus::properties,
                          &MenuLayoutOnBus::children);
    }
};

struct MenuRemovalOnBus {
    int id = 0;
    QStringList properties;  // that are as if they had never been set
    static constexpr auto fields() {
        return std::tuple(&MenuRemovalOnBus::id, &MenuRemovalOnBus::properties);
    }
};

struct MenuEventOnBus {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
    static constexpr auto fields() {
        return std::tuple(&MenuEventOnBus::id, &MenuEventOnBus::name, &MenuEventOnBus::data,
                          &MenuEventOnBus::timestamp);
    }
};

// Shows a MenuModel on the bus, to whoever draws it in the bar and tells what was chosen: the
// interface com.canonical.dbusmenu, version 3.
//
// The entries and their numbers stay what they are; what changes in the model is told once per turn
// of the event loop, and nothing where it is as before. A number that no entry has is answered by
// an error. Main thread only.
class MenuOnBus : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version MEMBER version_ CONSTANT)
    Q_PROPERTY(QString TextDirection MEMBER textDirection_ CONSTANT)
    Q_PROPERTY(QString Status MEMBER status_ CONSTANT)
    Q_PROPERTY(QStringList IconThemePath MEMBER iconThemePath_ CONSTANT)

public:
    // There from now on, at this path of the connection. The model outlives this.
    MenuOnBus(QDBusConnection bus, const QString& path, MenuModel& model);

public Q_SLOTS:
    // Depth 0 is the entry alone, and a negative one is without end; no names stand for all.
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   valdorn::MenuLayoutOnBus& layout);
    // No numbers stand for all entries; those that no entry has are left out.
    QList<valdorn::MenuEntryOnBus> GetGroupProperties(const QList<int>& ids,
                                                      const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    // Those for a group return the numbers that no entry has; if these are all, it is an error.
    QList<int> EventGroup(const QList<valdorn::MenuEventOnBus>& events);
    // Whether the layout is another than it was: never.
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<valdorn::MenuEntryOnBus>& updatedProps,
                                const QList<valdorn::MenuRemovalOnBus>& removedProps);
    // These two belong to the interface; there is never a reason for them.
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    bool isEntry(int id) const { return id >= 0 && id <= static_cast<int>(model_.items().size()); }
    bool refuseUnlessEntry(int id);
    QList<int> strangersAmong(const QList<int>& ids) const;
    void refuseIfAllAreStrange(const QList<int>& ids);
    QVariantMap propertiesOf(int id, const QStringList& names = {}) const;
    void take(int id, const QString& eventId);
    void activateChosen();
    void tell();

    const uint version_ = 3;
    const QString textDirection_ = QStringLiteral("ltr");
    const QString status_ = QStringLiteral("normal");
    const QStringList iconThemePath_;
    MenuModel& model_;
    std::vector<QVariantMap> told_;  // what can change of each entry, as it was told last
    std::vector<const MenuItem*> chosen_;
    QTimer endOfTurn_;
    Subscription changes_;
};

}  // namespace valdorn
