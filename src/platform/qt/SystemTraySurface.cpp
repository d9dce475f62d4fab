#include "platform/qt/SystemTraySurface.h"

#include <utility>

namespace valdorn {

SystemTraySurface::SystemTraySurface(TrayHost host, Content content) {
    icon_.setToolTip(QStringLiteral("Valdorn"));
    icon_.setIcon(content.icon);
    icon_.setContextMenu(content.menu);
    QObject::connect(
        &icon_, &QSystemTrayIcon::activated, &icon_,
        [host, open = std::move(content.onOpenMenu)](QSystemTrayIcon::ActivationReason reason) {
            // In an XEmbed tray Qt itself opens the menu for the secondary button.
            if (reason == QSystemTrayIcon::Trigger ||
                (reason == QSystemTrayIcon::Context && host == TrayHost::notifier))
                open();
        });
    icon_.show();
}

}  // namespace valdorn
