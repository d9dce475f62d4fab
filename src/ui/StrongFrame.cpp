#include "ui/StrongFrame.h"

#include <QEvent>
#include <QPalette>
#include <QWidget>

#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

// The style darkens the window's colour for the frame. The control fills its ground with other
// colours, so that this one is free to be whatever the frame needs.
constexpr double frameShare = 0.75;  // of the text's colour

}  // namespace

StrongFrame::StrongFrame(QWidget& control, Where where)
    : QObject(&control), control_(control), where_(where) {
    control.installEventFilter(this);
    apply();
}

std::optional<QColor> StrongFrame::source(const QPalette& around, Where where) {
    const bool isNeeded = SystemPalette::isHighContrast(around) ||
                          (where == Where::darkWindows && SystemPalette::isDark(around));
    if (!isNeeded)
        return std::nullopt;
    return SystemPalette::mixed(around.color(QPalette::Window), around.color(QPalette::WindowText),
                                frameShare);
}

bool StrongFrame::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
        apply();
    return QObject::eventFilter(watched, event);
}

void StrongFrame::apply() {
    const QPalette around = SystemPalette::around(control_);
    const auto wanted = source(around, where_);
    QPalette own;  // only what is set here counts, the rest stays inherited
    if (wanted)
        own.setColor(QPalette::Window, *wanted);
    if (SystemPalette::isHighContrast(around))
        for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
            own.setColor(QPalette::Disabled, role, SystemPalette::disabledText(around));
    // Setting a palette announces its change, which leads back here.
    const bool isSet = control_.testAttribute(Qt::WA_SetPalette);
    if (isSet != wanted.has_value() ||
        (wanted && control_.palette().color(QPalette::Window) != *wanted))
        control_.setPalette(own);
}

}  // namespace valdorn
