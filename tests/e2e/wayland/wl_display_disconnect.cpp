// Stands before the Wayland client library and never comes back from the farewell to the compositor.

#include <unistd.h>

struct wl_display;

extern "C" [[noreturn]] __attribute__((visibility("default"))) void wl_display_disconnect(
    wl_display*);

void wl_display_disconnect(wl_display*) {
    for (;;)
        pause();
}
