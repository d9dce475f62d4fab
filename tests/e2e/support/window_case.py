"""What the tests of the windows' contents have in common."""

from .accessibility import VARIABLES, Accessibility
from .case import ProgramCase
from .waiting import wait_until

STATUS = ("Runner Status…", "Valdorn — Runner Status")
LOG = ("Show Log…", "Valdorn — Log")


class WindowCase(ProgramCase):
    """Windows under a window manager, seen as a screen reader does, worked with mouse and keys."""

    window_manager = True

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.reader = Accessibility(cls.desktop)
        cls.addClassCleanup(cls.reader.close)

    def begin(self, **more):
        """The program with whatever runners the home has; `more` goes into its environment."""
        self.program, self.item = self.start_with_item(**VARIABLES, **more)
        self.menu = self.item.menu()

    def open(self, kind):
        """The content of the window, once it is the active one."""
        entry, title = kind
        self.menu.choose(entry)
        self.window_id = wait_until(lambda: self._active_id(title), f"an active {title!r}")
        return self.reader.window(title)

    def _active_id(self, title):
        window = self.desktop.active_window()
        return window if self.desktop.windows().get(window) == title else None

    def close_window(self):
        """Closes the one that was opened last."""
        self.desktop.xdotool("key", "ctrl+w")
        wait_until(lambda: self.window_id not in self.desktop.windows(), "a hidden window")

    def click(self, thing):
        self.desktop.click(*thing.centre())

    def press(self, *keys):
        self.desktop.xdotool("key", *keys)

    @staticmethod
    def focused(window):
        """What has the keyboard, or nothing."""
        return next((thing for thing in window.everything() if "focused" in thing.states()), None)

    def tab_to(self, window, thing):
        """Walks with the tab key until that has the keyboard."""
        passed = []
        while "focused" not in thing.states():
            before = self.focused(window)
            self.press("Tab")
            wait_until(lambda: self.focused(window) not in (None, before), "another focus", 5)
            passed.append(self.focused(window))
            self.assertLess(len(passed), 20, f"the tab key does not lead to {thing.name()!r}")
