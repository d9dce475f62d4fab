#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/WindowHost.h"

class QWidget;

namespace valdorn {

class HostedWindow;
class MenuModel;

// The program's windows as top-level widgets. The window manager's close button and Ctrl+W hide a
// window; nothing but the program's end destroys it.
class QtWindowHost : public WindowHost {
public:
    // Makes the view of a window, which then belongs to the window.
    using ViewFactory = std::function<QWidget*()>;

    QtWindowHost();
    ~QtWindowHost() override;

    // Tells how to make the view of that kind, before the kind is first shown.
    void registerView(WindowKind kind, ViewFactory makeView);

    void show(const WindowDescription& description) override;
    void close(WindowKind kind) override;

    // The compositor's leave to raise the next window that is shown, handed over by whoever asks
    // us to show one. It is good for one window. An empty token changes nothing.
    void useActivationToken(const std::string& token);

    // While no status bar shows the menu, the runner status window does, as an ordinary menu bar.
    // The model outlives the host or is withdrawn before. Both may be called twice.
    void offerMenu(MenuModel& menu);
    void withdrawMenu();

private:
    HostedWindow& window(const WindowDescription& description);
    void updateMenu();

    std::map<WindowKind, ViewFactory> factories_;
    std::map<WindowKind, std::unique_ptr<HostedWindow>> windows_;
    MenuModel* menu_ = nullptr;  // offered while not null
    std::string activationToken_;
};

}  // namespace valdorn
