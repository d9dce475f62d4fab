#include "platform/qt/MenuOnBus.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <algorithm>
#include <iterator>
#include <utility>

namespace valdorn {

namespace {

// That of the menu at its making: hosts take 0 for a menu that is not there yet.
constexpr uint revision = 1;

void registerTypes() {
    [[maybe_unused]] static const bool once = [] {
        qDBusRegisterMetaType<MenuEntryOnBus>();
        qDBusRegisterMetaType<QList<MenuEntryOnBus>>();
        qDBusRegisterMetaType<MenuLayoutOnBus>();
        qDBusRegisterMetaType<MenuRemovalOnBus>();
        qDBusRegisterMetaType<QList<MenuRemovalOnBus>>();
        qDBusRegisterMetaType<MenuEventOnBus>();
        qDBusRegisterMetaType<QList<MenuEventOnBus>>();
        qDBusRegisterMetaType<QList<QStringList>>();
        return true;
    }();
}

constexpr QLatin1String typeKey("type");
constexpr QLatin1String labelKey("label");
constexpr QLatin1String enabledKey("enabled");
constexpr QLatin1String visibleKey("visible");
constexpr QLatin1String shortcutKey("shortcut");
constexpr QLatin1String childrenKey("children-display");

// What a property is that an entry does not have.
QVariantMap defaults() {
    return {{typeKey, QStringLiteral("standard")},
            {labelKey, QString()},
            {enabledKey, true},
            {visibleKey, true},
            {shortcutKey, QVariant::fromValue(QList<QStringList>())},
            {childrenKey, QString()}};
}

// An underscore marks the next letter as a key to press; two of them stand for one.
QString label(const std::string& title) {
    return QString::fromStdString(title).replace(QLatin1Char('_'), QLatin1String("__"));
}

// A list of key presses, each a list of modifiers and the key.
QList<QStringList> shortcut(char key) {
    return key == 0 ? QList<QStringList>()
                    : QList<QStringList>{
                          {QStringLiteral("Control"), QString(QLatin1Char(key)).toUpper()}};
}

QVariantMap changeable(const MenuItem& item) {
    return {{labelKey, label(item.title)}, {visibleKey, !item.hidden}};
}

QVariantMap allProperties(const MenuItem& item) {
    QVariantMap all = changeable(item);
    all[typeKey] = item.separator ? QStringLiteral("separator") : QStringLiteral("standard");
    all[enabledKey] = item.enabled;
    all[shortcutKey] = QVariant::fromValue(shortcut(item.shortcut));
    return all;
}

// What of `map` is not in `others`, or is another there.
QVariantMap difference(const QVariantMap& map, const QVariantMap& others) {
    QVariantMap result;
    for (auto at = map.begin(); at != map.end(); ++at) {
        if (others.value(at.key()) != at.value())
            result[at.key()] = at.value();
    }
    return result;
}

}  // namespace

MenuOnBus::MenuOnBus(QDBusConnection bus, const QString& path, MenuModel& model) : model_(model) {
    registerTypes();
    for (const MenuItem& item : model.items())
        told_.push_back(changeable(item));
    endOfTurn_.setSingleShot(true);
    connect(&endOfTurn_, &QTimer::timeout, this, [this] {
        tell();
        activateChosen();
    });
    changes_ = model.onDidChange([this](const MenuItem&) { endOfTurn_.start(); });
    bus.registerObject(path, this, QDBusConnection::ExportAllContents);
}

bool MenuOnBus::refuseUnlessEntry(int id) {
    if (!isEntry(id))
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no entry %1").arg(id));
    return !isEntry(id);
}

QList<int> MenuOnBus::strangersAmong(const QList<int>& ids) const {
    QList<int> strangers;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(strangers),
                 [this](int id) { return !isEntry(id); });
    return strangers;
}

void MenuOnBus::refuseIfAllAreStrange(const QList<int>& ids) {
    if (!ids.isEmpty() && strangersAmong(ids).size() == ids.size())
        refuseUnlessEntry(ids.front());
}

QVariantMap MenuOnBus::propertiesOf(int id, const QStringList& names) const {
    QVariantMap properties{{childrenKey, QStringLiteral("submenu")}};
    if (id > 0)
        properties = allProperties(model_.items()[static_cast<std::size_t>(id - 1)]);
    QVariantMap sent = difference(properties, defaults());
    if (!names.isEmpty())
        sent.removeIf([&names](const auto& property) { return !names.contains(property.key()); });
    return sent;
}

uint MenuOnBus::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                          MenuLayoutOnBus& layout) {
    if (refuseUnlessEntry(parentId))
        return 0;
    layout = {parentId, propertiesOf(parentId, propertyNames), {}};
    for (int id = 1; parentId == 0 && recursionDepth != 0 && isEntry(id); ++id)
        layout.children.append(
            QVariant::fromValue(MenuLayoutOnBus{id, propertiesOf(id, propertyNames), {}}));
    return revision;
}

QList<MenuEntryOnBus> MenuOnBus::GetGroupProperties(const QList<int>& ids,
                                                    const QStringList& propertyNames) {
    QList<MenuEntryOnBus> group;
    for (int id = 0; isEntry(id); ++id) {
        if (ids.isEmpty() || ids.contains(id))
            group.append({id, propertiesOf(id, propertyNames)});
    }
    return group;
}

QDBusVariant MenuOnBus::GetProperty(int id, const QString& name) {
    if (refuseUnlessEntry(id))
        return {};
    const QVariant value = propertiesOf(id).value(name, defaults().value(name));
    if (!value.isValid())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no property ") + name);
    return QDBusVariant(value);
}

void MenuOnBus::take(int id, const QString& eventId) {
    if (id == 0 || eventId != QLatin1String("clicked"))
        return;
    chosen_.push_back(&model_.items()[static_cast<std::size_t>(id - 1)]);
    endOfTurn_.start();
}

// After the answer, and touching nothing of this: a choice may be its end.
void MenuOnBus::activateChosen() {
    const MenuModel& model = model_;
    for (const MenuItem* const item : std::exchange(chosen_, {})) {
        if (!item->separator)
            model.activate(item->id);
    }
}

void MenuOnBus::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (!refuseUnlessEntry(id))
        take(id, eventId);
}

QList<int> MenuOnBus::EventGroup(const QList<MenuEventOnBus>& events) {
    QList<int> ids;
    for (const MenuEventOnBus& event : events) {
        ids.append(event.id);
        if (isEntry(event.id))
            take(event.id, event.name);
    }
    refuseIfAllAreStrange(ids);
    return strangersAmong(ids);
}

bool MenuOnBus::AboutToShow(int id) {
    refuseUnlessEntry(id);
    return false;
}

QList<int> MenuOnBus::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    refuseIfAllAreStrange(ids);
    idErrors = strangersAmong(ids);
    return {};
}

void MenuOnBus::tell() {
    QList<MenuEntryOnBus> updated;
    for (std::size_t index = 0; index < told_.size(); ++index) {
        const QVariantMap now = changeable(model_.items()[index]);
        const QVariantMap changed = difference(now, std::exchange(told_[index], now));
        if (!changed.isEmpty())
            updated.append({static_cast<int>(index) + 1, changed});
    }
    if (!updated.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(updated, {});
}

}  // namespace valdorn
