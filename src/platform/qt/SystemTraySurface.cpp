#include "platform/qt/SystemTraySurface.h"

namespace valdorn {

SystemTraySurface::SystemTraySurface(const Content& content) {
    icon_.setToolTip(QStringLiteral("Valdorn"));
    icon_.setIcon(content.icon);
    QObject::connect(
        &icon_, &QSystemTrayIcon::activated, &icon_,
        [open = content.onOpenMenu](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context)
                open();
        });
    icon_.show();
}

}  // namespace valdorn
