"""What a desktop hears on X11 of the launches that it shows a busy pointer for."""

import ctypes

_EVENT_MASK, _PROPERTY_CHANGE = 1 << 11, 1 << 22
_CLIENT_MESSAGE = 33
_HEAD, _CHUNK = 12, 20  # bytes of such a message


class _Screens(ctypes.Structure):
    _fields_ = [("data", ctypes.POINTER(ctypes.c_uint32)), ("rem", ctypes.c_int),
                ("index", ctypes.c_int)]


class _Cookie(ctypes.Structure):
    _fields_ = [("sequence", ctypes.c_uint)]


def _libraries():
    xcb, libc = ctypes.CDLL("libxcb.so.1"), ctypes.CDLL(None)
    for name in ("xcb_connect", "xcb_get_setup", "xcb_poll_for_event", "xcb_intern_atom_reply"):
        getattr(xcb, name).restype = ctypes.c_void_p
    xcb.xcb_setup_roots_iterator.restype = _Screens
    xcb.xcb_intern_atom.restype = _Cookie
    libc.free.argtypes = [ctypes.c_void_p]
    return xcb, libc


class StartupListener:
    """Listens from now on."""

    def __init__(self, desktop):
        self._xcb, self._libc = _libraries()
        self._x = ctypes.c_void_p(self._xcb.xcb_connect(desktop.display.encode(), None))
        self._begin = self._atom(b"_NET_STARTUP_INFO_BEGIN")
        self._more = self._atom(b"_NET_STARTUP_INFO")
        self._texts = {}
        self._ended = []
        self._listen()

    def _atom(self, name):
        asked = self._xcb.xcb_intern_atom(self._x, 0, len(name), name)
        reply = self._xcb.xcb_intern_atom_reply(self._x, asked, None)
        atom = int.from_bytes(ctypes.string_at(reply + 8, 4), "little")
        self._libc.free(reply)
        return atom

    def _listen(self):
        setup = ctypes.c_void_p(self._xcb.xcb_get_setup(self._x))
        root = self._xcb.xcb_setup_roots_iterator(setup).data[0]
        mask = ctypes.c_uint32(_PROPERTY_CHANGE)
        self._xcb.xcb_change_window_attributes(self._x, root, _EVENT_MASK, ctypes.byref(mask))
        self._atom(b"WM_NAME")  # the answer comes after the mask is in force

    def ended(self):
        """The messages that have come, whole."""
        while event := self._xcb.xcb_poll_for_event(self._x):
            self._take(ctypes.string_at(event, _HEAD + _CHUNK))
            self._libc.free(event)
        return self._ended

    def _take(self, event):
        window, kind = (int.from_bytes(event[at:at + 4], "little") for at in (4, 8))
        if event[0] & 0x7f != _CLIENT_MESSAGE or kind not in (self._begin, self._more):
            return
        assert window, "a chunk that tells nobody whose message it is part of"
        before = b"" if kind == self._begin else self._texts[window]
        self._texts[window] = before + event[_HEAD:]
        if b"\0" in event[_HEAD:]:
            self._ended.append(self._texts.pop(window).rstrip(b"\0").decode())

    def close(self):
        self._xcb.xcb_disconnect(self._x)
