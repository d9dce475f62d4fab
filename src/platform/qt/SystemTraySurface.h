#pragma once

#include <QSystemTrayIcon>

#include "platform/qt/TraySurface.h"

namespace valdorn {

// The status item in an XEmbed tray. Qt decides once per process where it shows icons, when the
// first object of this kind is made: make it only when there is no notifier host.
class SystemTraySurface : public TraySurface {
public:
    explicit SystemTraySurface(const Content& content);

    void setIcon(const QIcon& icon) override { icon_.setIcon(icon); }

private:
    QSystemTrayIcon icon_;
};

}  // namespace valdorn
