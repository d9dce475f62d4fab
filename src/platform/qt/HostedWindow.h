#pragma once

#include <QWidget>
#include <memory>

#include "platform/WindowHost.h"

class QMenuBar;
class QVBoxLayout;

namespace valdorn {

class MenuModel;
class MenuRenderer;

// One top-level window around a view. Points are device-independent pixels.
class HostedWindow : public QWidget {
    Q_OBJECT

public:
    // Takes the view over. The content has the described size, or the view's minimum size where
    // that is larger (large fonts); a window that cannot be resized follows its view's minimum.
    HostedWindow(const WindowDescription& description, QWidget* view);
    ~HostedWindow() override;

    // Shows the window above the others and gives it the keyboard, also out of minimisation.
    void present();

    // Puts a menu bar with the one menu above the content, which keeps its size, or takes it away.
    void setMenu(MenuModel* menu);

Q_SIGNALS:
    // Each time it is taken off the screen, by whomever; some of what it took may still be there.
    void hidden();

protected:
    bool event(QEvent* event) override;

private:
    int menuBarHeight() const;
    void resizeContent(QSize content);
    void center();

    const QSize described_;
    const bool resizable_;
    QVBoxLayout* const layout_;
    QMenuBar* menuBar_ = nullptr;  // a child, or null
    std::unique_ptr<MenuRenderer> menuRenderer_;
};

}  // namespace valdorn
