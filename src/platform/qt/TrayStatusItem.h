#pragma once

#include <QIcon>
#include <QMenu>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/qt/MenuRenderer.h"
#include "platform/qt/TrayPictures.h"
#include "platform/qt/TraySurface.h"

namespace valdorn {

// The status item in the desktop's bar. It keeps what was set last; the bar is told once per turn
// of the main queue, and only what differs from what it has.
class TrayStatusItem : public StatusItem {
public:
    // The queue outlives this. The surface is made by `makeSurface` when show() is called.
    TrayStatusItem(MainQueue& mainQueue, TrayPictures pictures, TraySurface::Factory makeSurface);

    // A host is there: from now on the bar shows the item. The menu was set before. A surface for
    // another kind of host goes.
    void show(TrayHost host);

    // The session bus is gone, and with it what an item for a notifier host stood on: the next
    // show() makes it anew. An XEmbed tray needs no bus.
    void loseBus();

    void setMenu(MenuModel& menu) override;
    void setIcon(const StatusIcon& icon) override;
    void clearIcon() override;
    void startSpinner() override;
    void stopSpinner() override;
    bool isSpinning() const override { return spinning_; }
    void setLength(int points) override;

private:
    // What the bar can be made to show; equal pictures look the same.
    struct Picture {
        std::optional<StatusIcon> icon;
        std::optional<int> spinnerFrame;
        int length = variableLength;
        friend bool operator==(const Picture&, const Picture&) = default;
    };

    // The menu that this program opens, and what keeps it up to date.
    struct Popup {
        explicit Popup(MenuModel& model) : renderer(model, menu) {}
        QMenu menu;
        MenuRenderer renderer;
    };

    Picture wanted() const;
    QIcon draw(const Picture& picture);
    QIcon drawFrame(int frame, int length);
    void updateLater();
    void update();
    void turnSpinner();
    void openMenu();

    MainQueue& mainQueue_;
    const TrayPictures pictures_;
    const TraySurface::Factory makeSurface_;
    std::optional<StatusIcon> icon_;
    int length_ = variableLength;
    bool spinning_ = false;
    int frame_ = 0;
    std::map<std::pair<int, int>, QIcon> frames_;  // drawn since the spinner began; frame, length
    MenuModel noMenu_{{}};
    MenuModel* menu_ = &noMenu_;
    std::unique_ptr<Popup> popup_;
    Picture shown_;
    std::unique_ptr<TraySurface> surface_;  // empty until a host is there
    std::optional<TrayHost> host_;          // what the surface was made for, if one ever was
    ScheduledTask update_;
    ScheduledTask turning_;
};

}  // namespace valdorn
