#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>

namespace valdorn {

// Knows whether an X11 tray of the older kind (XEmbed) is there, without touching QSystemTrayIcon.
// On other platforms there never is one. Main thread only; the application object exists before
// and outlives it.
class XembedTrayWatcher : public QAbstractNativeEventFilter {
public:
    // `onChange` is called when a tray has come, and may be called when one has gone.
    explicit XembedTrayWatcher(std::function<void()> onChange);
    ~XembedTrayWatcher() override;
    XembedTrayWatcher(const XembedTrayWatcher&) = delete;
    XembedTrayWatcher& operator=(const XembedTrayWatcher&) = delete;

    // Asks the X server, which answers in a moment.
    bool isTrayPresent();

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    const std::function<void()> onChange_;
    std::uint32_t managerAtom_ = 0;    // announces a new owner of a selection; 0 without X11
    std::uint32_t selectionAtom_ = 0;  // is owned by the tray of our screen
    std::uint32_t trayWindow_ = 0;     // the owner when last asked, or 0
};

}  // namespace valdorn
