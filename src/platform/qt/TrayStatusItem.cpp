#include "platform/qt/TrayStatusItem.h"

#include <QCursor>
#include <QIcon>
#include <utility>

namespace valdorn {

namespace {

// Five pictures a second: each one travels to the bar and is drawn there.
constexpr std::chrono::milliseconds spinnerPeriod{200};

}  // namespace

TrayStatusItem::TrayStatusItem(MainQueue& mainQueue, TrayPictures pictures,
                               TraySurface::Factory makeSurface)
    : mainQueue_(mainQueue), pictures_(std::move(pictures)), makeSurface_(std::move(makeSurface)) {}

void TrayStatusItem::show(TrayHost host) {
    if (surface_)
        return;
    host_ = host;
    shown_ = wanted();
    surface_ = makeSurface_(
        host, {draw(shown_), barMenu_ ? &barMenu_->menu : nullptr, [this] { openMenu(); }});
    turnSpinner();
}

void TrayStatusItem::loseBus() {
    if (host_ != TrayHost::notifier)
        return;
    turning_.cancel();
    update_.cancel();
    surface_.reset();
}

void TrayStatusItem::setMenu(MenuModel& menu) {
    barMenu_ = std::make_unique<RenderedMenu>(menu, MenuDrawer::statusBar);
    popupMenu_ = std::make_unique<RenderedMenu>(menu, MenuDrawer::program);
}

void TrayStatusItem::setIcon(const StatusIcon& icon) {
    icon_ = icon;
    updateLater();
}

void TrayStatusItem::clearIcon() {
    icon_.reset();
    updateLater();
}

void TrayStatusItem::startSpinner() {
    if (std::exchange(spinning_, true))
        return;
    frame_ = 0;
    turnSpinner();
    updateLater();
}

void TrayStatusItem::stopSpinner() {
    spinning_ = false;
    turning_.cancel();
    updateLater();
}

void TrayStatusItem::setLength(int points) {
    length_ = points;
    updateLater();
}

void TrayStatusItem::turnSpinner() {
    if (!spinning_ || !surface_)
        return;
    turning_ = mainQueue_.every(spinnerPeriod, [this] {
        frame_ = (frame_ + 1) % pictures_.spinnerFrames;
        update();
    });
}

TrayStatusItem::Picture TrayStatusItem::wanted() const {
    if (spinning_)
        return {std::nullopt, frame_, length_};
    return {icon_, std::nullopt, variableLength};
}

QIcon TrayStatusItem::draw(const Picture& picture) const {
    if (picture.spinnerFrame)
        return pictures_.spinner(*picture.spinnerFrame, picture.length);
    return picture.icon ? pictures_.icon(*picture.icon) : pictures_.empty();
}

void TrayStatusItem::updateLater() {
    if (surface_)
        update_ = mainQueue_.after(std::chrono::milliseconds{0}, [this] { update(); });
}

void TrayStatusItem::update() {
    const Picture picture = wanted();
    if (picture == shown_)
        return;
    shown_ = picture;
    surface_->setIcon(draw(picture));
}

void TrayStatusItem::openMenu() {
    if (popupMenu_)
        popupMenu_->menu.popup(QCursor::pos());
}

}  // namespace valdorn
