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
    if (surface_ && host == host_)
        return;
    host_ = host;
    shown_ = wanted();
    surface_.reset();  // the one must not stand beside the other
    surface_ = makeSurface_(host, {draw(shown_), *menu_, [this] { openMenu(); }});
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
    menu_ = &menu;
    popup_ = std::make_unique<Popup>(menu);
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
    frames_.clear();
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

QIcon TrayStatusItem::draw(const Picture& picture) {
    if (picture.spinnerFrame)
        return drawFrame(*picture.spinnerFrame, picture.length);
    return picture.icon ? pictures_.icon(*picture.icon) : pictures_.empty();
}

QIcon TrayStatusItem::drawFrame(int frame, int length) {
    const auto [drawn, isNew] = frames_.try_emplace({frame, length});
    if (isNew)
        drawn->second = pictures_.spinner(frame, length);
    return drawn->second;
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
    if (popup_)
        popup_->menu.popup(QCursor::pos());
}

}  // namespace valdorn
