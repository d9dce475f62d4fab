#include "ui/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QLabel>
#include <QVariant>
#include <QWidget>

namespace valdorn::AccessibleRole {

namespace {

constexpr char property[] = "valdornAccessibleRole";

// A label that bears no other name is called by what it says.
class Interface : public QAccessibleWidget {
public:
    Interface(QWidget& widget, QAccessible::Role role) : QAccessibleWidget(&widget, role) {}

    QString text(QAccessible::Text kind) const override {
        const QString given = QAccessibleWidget::text(kind);
        const auto* const label = qobject_cast<const QLabel*>(object());
        return kind == QAccessible::Name && given.isEmpty() && label ? label->text() : given;
    }
};

QAccessibleInterface* interfaceOf(const QString&, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget ? widget->property(property) : QVariant();
    if (!role.isValid())
        return nullptr;
    return new Interface(*widget, static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

void set(QWidget& widget, QAccessible::Role role) {
    QAccessible::installFactory(interfaceOf);  // once, however often it is asked for
    widget.setProperty(property, static_cast<int>(role));
}

}  // namespace valdorn::AccessibleRole
