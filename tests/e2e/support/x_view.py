"""What an X server knows of its clients and windows, without a process for each question."""

import Xlib.display
import Xlib.error
from Xlib import X
from Xlib.ext import res
from Xlib.protocol import event


class XView:
    """A connection of one's own to the desktop's display; to be closed."""

    def __init__(self, desktop):
        self._display = Xlib.display.Display(desktop.display)
        self._root = self._display.screen().root
        self._display.res_query_version()  # the extension wants to be asked this first

    def _atom(self, name):
        return self._display.get_atom(name)

    def resources(self, pid):
        """How many things of each kind the clients of a process have on the server, by name."""
        counts = {}
        asked = self._display.res_query_client_ids([{"client": 0, "mask": res.LocalClientPIDMask}])
        for client in asked.ids:
            if list(client.value) == [pid]:
                for kind in self._display.res_query_client_resources(client.spec.client).types:
                    name = self._display.get_atom_name(kind.resource_type)
                    counts[name] = counts.get(name, 0) + kind.count
        return counts

    def active(self):
        """The title of the window that has the focus, and the window; needs a window manager."""
        found = self._root.get_full_property(self._atom("_NET_ACTIVE_WINDOW"), X.AnyPropertyType)
        if not found or not found.value[0]:
            return None, None
        window = self._display.create_resource_object("window", found.value[0])
        try:
            title = window.get_full_property(self._atom("_NET_WM_NAME"), X.AnyPropertyType)
        except Xlib.error.BadWindow:  # it has just gone
            return None, None
        return title and title.value.decode(), window

    def is_shown(self, window):
        try:
            return window.get_attributes().map_state == X.IsViewable
        except Xlib.error.BadWindow:
            return False

    def close_window(self, window):
        """As the button in its frame does."""
        message = event.ClientMessage(window=window, client_type=self._atom("_NET_CLOSE_WINDOW"),
                                      data=(32, [X.CurrentTime, 2, 0, 0, 0]))
        self._root.send_event(message, X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self._display.flush()

    def close(self):
        self._display.close()
