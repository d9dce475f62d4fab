#pragma once

#include <QSystemTrayIcon>

#include "platform/qt/TraySurface.h"

namespace valdorn {

// The real surface. Qt decides once per process whether there is a bus to show icons on, when the
// first object of this kind is made: make it only when the wanted host is there.
class SystemTraySurface : public TraySurface {
public:
    SystemTraySurface(TrayHost host, Content content);

    void setIcon(const QIcon& icon) override { icon_.setIcon(icon); }

private:
    QSystemTrayIcon icon_;
};

}  // namespace valdorn
