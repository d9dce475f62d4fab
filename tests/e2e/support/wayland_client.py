"""What other programs on a Wayland desktop do for a test: a launcher that has the compositor's leave
to raise a window, and a mouse."""

import socket
import struct
import time

_DISPLAY, _REGISTRY = 1, 2
_LEFT_BUTTON = 0x110  # Linux's number for it


class WaylandClient:
    """A connection to the compositor. A message is the object's number, its length and operation
    in one more number, and the arguments."""

    def __init__(self, desktop):
        self._connection = socket.socket(socket.AF_UNIX)
        self._connection.settimeout(10)
        self._connection.connect(desktop.environment["WAYLAND_DISPLAY"])
        self._file = self._connection.makefile("rb")
        self._newest = _REGISTRY
        self._globals = {}
        self.send(_DISPLAY, 1, _number(_REGISTRY))
        self.settle()

    def new_number(self):
        self._newest += 1
        return self._newest

    def send(self, thing, operation, *arguments):
        body = b"".join(arguments)
        self._connection.sendall(
            struct.pack("=II", thing, (8 + len(body)) << 16 | operation) + body)

    def wait_for(self, thing):
        """The arguments of the next event that comes from it."""
        while True:
            sender, word = struct.unpack("=II", self._file.read(8))
            body = self._file.read((word >> 16) - 8)
            if sender == _REGISTRY:
                self._globals[_text(body[4:])] = body[:4]
            if sender == thing:
                return body

    def settle(self):
        """Until the compositor has done all that was asked for."""
        done = self.new_number()
        self.send(_DISPLAY, 0, _number(done))
        self.wait_for(done)

    def bind(self, interface):
        """The number of the only thing of that kind that the compositor has."""
        number = self.new_number()
        self.send(_REGISTRY, 0, self._globals[interface], _string(interface), _number(1),
                  _number(number))
        return number

    def close(self):
        self._file.close()
        self._connection.close()


def activation_token(desktop):
    """A fresh one, as a launcher puts it into the environment of what it starts."""
    client = WaylandClient(desktop)
    try:
        activation, token = client.bind("xdg_activation_v1"), client.new_number()
        client.send(activation, 1, _number(token))
        client.send(token, 3)
        return _text(client.wait_for(token))
    finally:
        client.close()


class Mouse:
    """The desktop has one as long as this is open."""

    def __init__(self, desktop, size=(1280, 800)):
        self._client = WaylandClient(desktop)
        self._size = size
        manager = self._client.bind("zwlr_virtual_pointer_manager_v1")
        self._mouse = self._client.new_number()
        self._client.send(manager, 0, _number(0), _number(self._mouse))
        self._client.settle()

    def click(self, x, y):
        self._do(1, x, y, *self._size)
        for pressed in (1, 0):
            self._do(2, _LEFT_BUTTON, pressed)

    def _do(self, operation, *arguments):
        now = int(time.monotonic() * 1000) & 0xffffffff
        self._client.send(self._mouse, operation, *map(_number, (now, *arguments)))
        self._client.send(self._mouse, 4)
        self._client.settle()

    def close(self):
        self._client.close()


def _number(value):
    return struct.pack("=I", value)


def _string(text):
    data = text.encode() + b"\0"
    return _number(len(data)) + data + b"\0" * (-len(data) % 4)


def _text(body):
    length, = struct.unpack_from("=I", body)
    return body[4:4 + length - 1].decode()
