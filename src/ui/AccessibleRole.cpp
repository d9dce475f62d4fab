#include "ui/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace valdorn::AccessibleRole {

namespace {

constexpr char property[] = "valdornAccessibleRole";

QAccessibleInterface* interfaceOf(const QString&, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget ? widget->property(property) : QVariant();
    if (!role.isValid())
        return nullptr;
    return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

void set(QWidget& widget, QAccessible::Role role) {
    static const bool installed = [] {
        QAccessible::installFactory(interfaceOf);
        return true;
    }();
    static_cast<void>(installed);
    widget.setProperty(property, static_cast<int>(role));
}

}  // namespace valdorn::AccessibleRole
