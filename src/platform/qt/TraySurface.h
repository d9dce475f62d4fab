#pragma once

#include <QIcon>
#include <functional>
#include <memory>

#include "platform/TrayHost.h"

class QMenu;

namespace valdorn {

// The status item as the desktop's bar shows it. Main thread only.
class TraySurface {
public:
    // What the bar starts with. The menu, which may be null, outlives the surface.
    struct Content {
        QIcon icon;
        QMenu* menu = nullptr;
        std::function<void()> onOpenMenu;  // the user wants the menu, and the bar shows none itself
    };
    using Factory = std::function<std::unique_ptr<TraySurface>(TrayHost, Content)>;

    TraySurface() = default;
    TraySurface(const TraySurface&) = delete;
    TraySurface& operator=(const TraySurface&) = delete;
    virtual ~TraySurface() = default;

    virtual void setIcon(const QIcon& icon) = 0;
};

}  // namespace valdorn
