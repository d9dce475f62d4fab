#include "platform/qt/MenuRenderer.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QPalette>
#include <QString>

namespace valdorn {

namespace {

// An ampersand marks the next letter as a key to press; two of them stand for one.
QString escaped(QString title) {
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

QKeySequence sequence(char shortcut) {
    if (shortcut == 0)
        return {};
    return QKeySequence(QStringLiteral("Ctrl+%1").arg(QLatin1Char(shortcut)));
}

// The lines that cannot be chosen tell the status: they are there to be read, for which the faint
// grey of styles does not stand out enough.
void makeDisabledTextReadable(QMenu& menu) {
    constexpr float share = 0.65F;  // 5:1 for black on white
    QPalette palette = menu.palette();
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    const QColor window = palette.color(QPalette::Active, QPalette::Window);
    const auto mix = [](float one, float other) { return share * one + (1 - share) * other; };
    const QColor readable =
        QColor::fromRgbF(mix(text.redF(), window.redF()), mix(text.greenF(), window.greenF()),
                         mix(text.blueF(), window.blueF()));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, readable);
    menu.setPalette(palette);
}

}  // namespace

MenuRenderer::MenuRenderer(MenuModel& model, QMenu& menu) : model_(model), menu_(menu) {
    makeDisabledTextReadable(menu);
    for (const MenuItem& item : model.items())
        add(item);
    changes_ = model.onDidChange([this](const MenuItem& item) { update(item); });
}

void MenuRenderer::add(const MenuItem& item) {
    if (item.separator) {
        menu_.addSeparator();
        return;
    }
    const std::string id = item.id;
    QAction* const action = menu_.addAction(QString());
    action->setObjectName(QString::fromStdString(id));
    action->setShortcut(sequence(item.shortcut));
    action->setEnabled(item.enabled);
    QObject::connect(action, &QAction::triggered, &menu_, [this, id] { model_.activate(id); });
    actions_[id] = action;
    update(item);
}

void MenuRenderer::update(const MenuItem& item) {
    const auto found = actions_.find(item.id);
    if (found == actions_.end())
        return;
    found->second->setText(escaped(QString::fromStdString(item.title)));
    found->second->setVisible(!item.hidden);
}

}  // namespace valdorn
