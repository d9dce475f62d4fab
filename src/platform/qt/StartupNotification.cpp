#include "platform/qt/StartupNotification.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace valdorn {

namespace {

using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

bool isX11Ours() {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return QGuiApplication::platformName() == QLatin1String("xcb");
    return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

xcb_window_t rootWindow(xcb_connection_t* x, int screen) {
    auto at = xcb_setup_roots_iterator(xcb_get_setup(x));
    for (; screen > 0 && at.rem > 1; --screen)
        xcb_screen_next(&at);
    return at.data->root;
}

xcb_atom_t atom(xcb_connection_t* x, std::string_view name) {
    const auto asked = xcb_intern_atom(x, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(x, asked, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// Never seen: it tells our chunks from those of others.
xcb_window_t makeSender(xcb_connection_t* x, xcb_window_t root) {
    const xcb_window_t window = xcb_generate_id(x);
    constexpr std::uint32_t unmanaged = 1;
    xcb_create_window(x, 0, window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
    return window;
}

void send(xcb_connection_t* x, xcb_window_t root,
          const std::vector<StartupNotification::Chunk>& chunks) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = makeSender(x, root);
    event.type = atom(x, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t continuation = atom(x, "_NET_STARTUP_INFO");
    for (const auto& chunk : chunks) {
        std::copy(chunk.begin(), chunk.end(), event.data.data8);
        xcb_send_event(x, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&event));
        event.type = continuation;
    }
}

// The server may drop what a client that has gone has left unread.
void waitUntilDone(xcb_connection_t* x) {
    std::free(xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr));
}

}  // namespace

std::vector<StartupNotification::Chunk> StartupNotification::completion(std::string_view id) {
    std::string message = "remove: ID=\"";
    for (const char c : id) {
        if (c == '"' || c == '\\')
            message += '\\';
        message += c;
    }
    message += '"';
    message += '\0';
    std::vector<Chunk> chunks;
    for (std::string_view rest = message; !rest.empty();) {
        Chunk& chunk = chunks.emplace_back(Chunk{});
        rest.remove_prefix(rest.copy(chunk.data(), chunk.size()));
    }
    return chunks;
}

void StartupNotification::complete(const std::string& id) {
    if (id.empty() || !isX11Ours())
        return;
    int screen = 0;
    const Connection x(xcb_connect(nullptr, &screen), &xcb_disconnect);
    if (xcb_connection_has_error(x.get()) != 0)
        return;
    send(x.get(), rootWindow(x.get(), screen), completion(id));
    waitUntilDone(x.get());
}

}  // namespace valdorn
