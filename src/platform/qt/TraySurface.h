#pragma once

#include <QIcon>
#include <functional>
#include <memory>

#include "platform/MenuModel.h"
#include "platform/TrayHost.h"

namespace valdorn {

// The status item as the desktop's bar shows it. Main thread only.
class TraySurface {
public:
    // What the bar starts with.
    struct Content {
        QIcon icon;
        MenuModel& menu;                   // outlives the surface
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
