#include "platform/qt/QtWindowHost.h"

#include <QByteArray>
#include <QWidget>
#include <cstdlib>
#include <utility>

#include "platform/qt/HostedWindow.h"

namespace valdorn {

QtWindowHost::QtWindowHost() = default;
QtWindowHost::~QtWindowHost() = default;

void QtWindowHost::registerView(WindowKind kind, ViewFactory makeView) {
    factories_[kind] = std::move(makeView);
}

HostedWindow& QtWindowHost::window(const WindowDescription& description) {
    auto& window = windows_[description.kind];
    if (!window) {
        const auto factory = factories_.find(description.kind);
        if (factory == factories_.end())
            std::abort();  // our own mistake: every kind has its view
        window = std::make_unique<HostedWindow>(description, factory->second());
        updateMenu();
    }
    return *window;
}

void QtWindowHost::show(const WindowDescription& description) {
    HostedWindow& shown = window(description);
    // Qt takes the token from the environment when it shows a window, and offers no other way. It is
    // changed on the main thread, before which Qt has asked for all that it reads on others.
    if (!activationToken_.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken_));
    activationToken_.clear();
    shown.present();
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

void QtWindowHost::close(WindowKind kind) {
    if (const auto found = windows_.find(kind); found != windows_.end())
        found->second->close();
}

void QtWindowHost::useActivationToken(const std::string& token) {
    if (!token.empty())
        activationToken_ = token;
}

void QtWindowHost::offerMenu(MenuModel& menu) {
    if (std::exchange(menu_, &menu) != &menu)
        updateMenu();
}

void QtWindowHost::withdrawMenu() {
    if (std::exchange(menu_, nullptr))
        updateMenu();
}

void QtWindowHost::updateMenu() {
    if (const auto found = windows_.find(WindowKind::status); found != windows_.end())
        found->second->setMenu(menu_);
}

}  // namespace valdorn
