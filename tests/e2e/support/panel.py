"""Real panels with a tray, as people have them."""

import os
import shutil
import subprocess
import tempfile

from . import looks
from .tray import item_of_panel, items_of_panel
from .waiting import wait_until

SOURCE = os.environ["VALDORN_SOURCE"]
SETTINGS_SERVICE = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"
SETTINGS_NAME = "org.xfce.Xfconf"
HEIGHT = 31


class Panel:
    """Xfce's, at the top of the desktop, with nothing but a tray at its right end."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._folder = tempfile.mkdtemp(prefix="valdorn-panel.")
        self._processes = []
        self._connection = desktop.bus.connect()
        self._width = int(desktop.xdotool("getdisplaygeometry").split()[0])
        self._prepare()
        self.start()

    def _prepare(self):
        # The same panel as `./dev run` shows.
        subprocess.run(["bash", "-c", '. tools/dev/run.sh; write_panel_settings "$1"', "bash",
                        self._folder], cwd=SOURCE, check=True, timeout=30)
        self._start(SETTINGS_SERVICE)
        wait_until(lambda: self._connection.name_has_owner(SETTINGS_NAME), "the panel's settings")

    def start(self):
        self.process = self._start("xfce4-panel", "--disable-wm-check")

    def end(self):
        """As a crash does."""
        self._processes.remove(self.process)
        self._desktop.end(self.process)

    def _start(self, *command):
        process = self._desktop.start("env", f"XDG_CONFIG_HOME={self._folder}", *command)
        self._processes.append(process)
        return process

    def item(self):
        """The status item that the panel has, once it has one."""
        return item_of_panel(self._connection)

    def wait_for_none(self):
        """Until the panel has no item any more."""
        wait_until(lambda: not items_of_panel(self._connection), "an empty tray")

    def place(self):
        """Where the item is on the screen: nothing else in the panel has a colour."""
        return looks.most_colourful_place(*self._picture())

    def colour(self):
        """Of the item, as the panel paints it."""
        return looks.colour_in(*self._picture())

    def _picture(self):
        """One that shows the panel, and where."""
        picture = looks.take_picture(self._desktop, "root", "panel")
        return picture, (0, 0, self._width, HEIGHT)

    def choose(self, label, look=lambda menu: None):
        """From the menu that a real click opens; `look` is called with its window before the
        choice."""
        before = set(self._desktop.all_visible())
        self._desktop.xdotool("mousemove", *map(str, self.place()), "click", "3")
        opened = wait_until(lambda: set(self._desktop.all_visible()) - before, "the panel's menu")
        choices = [entry["label"] for entry in self.item().menu().entries()
                   if entry["enabled"] and entry["visible"] and entry["type"] == "standard"]
        self._desktop.xdotool("key", *["Down"] * (choices.index(label) + 1))
        look(*opened)
        self._desktop.xdotool("key", "Return")
        wait_until(lambda: not opened & set(self._desktop.all_visible()), "a closed menu")

    def close(self):
        # First, as they write down their settings when they end.
        while self._processes:
            self._desktop.end(self._processes.pop())
        shutil.rmtree(self._folder, ignore_errors=True)


# The tray and nothing else; the usual theme of that desktop.
_LXQT_SETTINGS = """panels=panel1

[panel1]
plugins=statusnotifier
position=Top
panelSize=31
iconSize=22
hidable=false

[statusnotifier]
alignment=Right
type=statusnotifier
"""


class LxqtPanel(Panel):
    """LXQt's, in the same place."""

    def _prepare(self):
        self._settings = os.path.join(self._folder, "panel.conf")
        with open(self._settings, "w") as file:
            file.write(_LXQT_SETTINGS)

    def start(self):
        self.process = self._start("lxqt-panel", f"--configfile={self._settings}")
