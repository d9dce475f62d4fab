#include "ui/CheckBox.h"

#include <QApplication>
#include <QEvent>

#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

// The style darkens the window's colour for the frame. The box does not fill its ground, so that
// colour is free to be as light as the frame needs.
constexpr double frameShare = 0.75;  // of the text's colour

}  // namespace

CheckBox::CheckBox(const QString& title) : QCheckBox(title) {
    reframe();
}

void CheckBox::changeEvent(QEvent* event) {
    QCheckBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
        reframe();
}

void CheckBox::reframe() {
    const QPalette around = parentWidget() ? parentWidget()->palette() : QApplication::palette();
    QPalette own;  // only what is set here counts, the rest stays inherited
    if (SystemPalette::isDark(around))
        own.setColor(QPalette::Window,
                     SystemPalette::mixed(around.color(QPalette::Window),
                                          around.color(QPalette::WindowText), frameShare));
    // Setting a palette announces its change, which leads back here.
    const bool isSet = testAttribute(Qt::WA_SetPalette);
    if (isSet != SystemPalette::isDark(around) ||
        (isSet && palette().color(QPalette::Window) != own.color(QPalette::Window)))
        setPalette(own);
}

}  // namespace valdorn
