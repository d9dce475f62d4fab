#include "platform/qt/XembedTrayWatcher.h"

#include <QByteArray>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <utility>

#include <xcb/xcb.h>

namespace valdorn {

namespace {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, FreeReply>;

xcb_connection_t* connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

QByteArray selectionName() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0)
        std::free(host);
    return "_NET_SYSTEM_TRAY_S" + QByteArray::number(screen);
}

xcb_atom_t atom(xcb_connection_t* x, const QByteArray& name) {
    const auto asked = xcb_intern_atom(x, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const ReplyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(x, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace

XembedTrayWatcher::XembedTrayWatcher(std::function<void()> onChange)
    : onChange_(std::move(onChange)) {
    xcb_connection_t* const x = connection();
    if (!x)
        return;
    managerAtom_ = atom(x, "MANAGER");
    selectionAtom_ = atom(x, selectionName());
    // Qt has asked for the root window's events, where trays announce themselves.
    qGuiApp->installNativeEventFilter(this);
}

XembedTrayWatcher::~XembedTrayWatcher() {
    qGuiApp->removeNativeEventFilter(this);
}

bool XembedTrayWatcher::isTrayPresent() {
    xcb_connection_t* const x = connection();
    if (!x || selectionAtom_ == XCB_ATOM_NONE)
        return false;
    const auto asked = xcb_get_selection_owner(x, selectionAtom_);
    const ReplyPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(x, asked, nullptr));
    trayWindow_ = reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
    return trayWindow_ != XCB_WINDOW_NONE;
}

bool XembedTrayWatcher::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    const int type = event->response_type & 0x7f;  // the top bit tells who has sent it
    if (type == XCB_CLIENT_MESSAGE) {
        const auto* const told = static_cast<const xcb_client_message_event_t*>(message);
        if (told->type == managerAtom_ && told->data.data32[1] == selectionAtom_)
            onChange_();
    } else if (type == XCB_DESTROY_NOTIFY && trayWindow_ != XCB_WINDOW_NONE) {
        if (static_cast<const xcb_destroy_notify_event_t*>(message)->window == trayWindow_)
            onChange_();
    }
    return false;
}

}  // namespace valdorn
