"""Desktops without X11. All started here, all ended here by their process ids."""

import json
import os
import pwd
import shutil
import subprocess
import tempfile

from .desktop import Desktop
from .waiting import TimedOut, wait_until

_SWAY_SETTINGS = """
output HEADLESS-1 mode 1280x800@60Hz position 0 0
seat seat0 fallback true
focus_follows_mouse no
focus_on_window_activation smart
xwayland disable
for_window [app_id=".*"] floating enable
"""


def _variables(socket):
    # Qt unloads its plugins for Wayland before AddressSanitizer looks for leaks, and theirs have no
    # name then to know them by. Ours show on X11.
    return {"WAYLAND_DISPLAY": socket, "QT_QPA_PLATFORM": "wayland",
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}


class WaylandDesktop(Desktop):
    """A compositor with windows that float, focus, activation by token, pointer and keyboard."""

    def __init__(self):
        super().__init__(display=False)
        self._folder = tempfile.mkdtemp(prefix="valdorn-sway.")
        try:
            self._start_compositor()
        except BaseException:
            self.close()
            raise

    def _start_compositor(self):
        settings = os.path.join(self._folder, "settings")
        with open(settings, "w") as file:
            file.write(_SWAY_SETTINGS)
        self._compositor = self.start(
            *self._as_nobody(), "env", f"XDG_RUNTIME_DIR={self._folder}", "WLR_BACKENDS=headless",
            "WLR_RENDERER=pixman", "WLR_LIBINPUT_NO_DEVICES=1", "sway", "--config", settings)
        socket = wait_until(lambda: self._file("wayland-", ""), "the compositor")
        self._ipc = wait_until(lambda: self._file("sway-ipc.", ".sock"), "its other socket")
        self.environment.update(_variables(socket))

    def _as_nobody(self):
        # It refuses to run as root.
        if os.geteuid() != 0:
            return []
        nobody = pwd.getpwnam("nobody")
        os.chown(self._folder, nobody.pw_uid, nobody.pw_gid)
        return ["setpriv", f"--reuid={nobody.pw_uid}", f"--regid={nobody.pw_gid}", "--clear-groups"]

    def _file(self, start, end):
        names = [name for name in os.listdir(self._folder)
                 if name.startswith(start) and name.endswith(end) and not name.endswith(".lock")]
        return os.path.join(self._folder, names[0]) if names else None

    def _sway(self, *arguments):
        return subprocess.run(["swaymsg", "--socket", self._ipc, *arguments], check=True,
                              capture_output=True, text=True, timeout=30).stdout

    def _views(self):
        def walk(node):
            if node.get("pid") and node["type"] in ("con", "floating_con"):
                yield node
            for child in node["nodes"] + node["floating_nodes"]:
                yield from walk(child)
        return list(walk(json.loads(self._sway("--type", "get_tree"))))

    def titles(self):
        """Of the windows that are shown."""
        return [view["name"] for view in self._views()]

    def focused(self):
        """The title of the window that has the keyboard, or nothing."""
        return next((view["name"] for view in self._views() if view["focused"]), None)

    def wait_for_active(self, title, seconds=20.0):
        try:
            wait_until(lambda: self.focused() == title, f"{title!r} in front", seconds)
        except TimedOut as late:
            raise TimedOut(f"{late}; {self.focused()!r} is, of {self.titles()}") from None

    def content(self, title):
        """Left, top, width and height of what the window shows."""
        view = next(view for view in self._views() if view["name"] == title)
        frame, inner = view["rect"], view["window_rect"]
        return frame["x"] + inner["x"], frame["y"] + inner["y"], inner["width"], inner["height"]

    def close_windows(self, title):
        """As the close button does, all of that title."""
        self._sway(f'[title="^{title}$"] kill')

    def take_screen(self, path):
        subprocess.run(["grim", path], env=self.environment, check=True, capture_output=True,
                       timeout=30)

    def end_display(self):
        """Takes the compositor away from whoever is on it."""
        self.end(self._compositor)

    def close(self):
        super().close()
        shutil.rmtree(self._folder, ignore_errors=True)


class BareWaylandDesktop(Desktop):
    """A compositor with the least that windows need: nobody draws frames, there is neither pointer
    nor keyboard, and no activation."""

    def __init__(self):
        super().__init__(display=False)
        socket = os.path.join(self.runtime, "wayland-bare")
        try:
            self._compositor = self.start(
                "weston", "--backend=headless-backend.so", f"--socket={os.path.basename(socket)}",
                "--idle-time=0", "--no-config")
            wait_until(lambda: os.path.exists(socket), "the compositor")
        except BaseException:
            self.close()
            raise
        self.environment.update(_variables(socket))

    def end_display(self):
        """Takes the compositor away from whoever is on it."""
        self.end(self._compositor)
