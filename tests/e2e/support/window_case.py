"""What the tests of the windows' contents have in common."""

from .accessibility import VARIABLES, Accessibility
from .case import ProgramCase
from .desktop import usual_window_manager
from .waiting import wait_until


class WindowCase(ProgramCase):
    """Windows under a window manager, seen as a screen reader does, worked with mouse and keys."""

    window_manager = usual_window_manager
    # Of the program that runs: Qt tells screen readers its own points.
    scale = 1

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.reader = Accessibility(cls.desktop)
        cls.addClassCleanup(cls.reader.close)

    def begin(self, **options):
        """The program with whatever runners the home has; the options are those of `Program`."""
        self.program, self.item = self.start_with_item(**VARIABLES, **options)
        self.menu = self.item.menu()

    def open(self, kind):
        """The content of the window, once it is the active one."""
        self.menu.choose(kind.entry)
        return self.wait_for_window(kind)

    def wait_for_window(self, kind):
        """The content of a window that comes up as the active one."""
        def active():
            return next((window for window in self.shown(kind) if "active" in window.states()), None)
        window = wait_until(active, f"an active {kind.entry!r}")
        self.window_id = self.desktop.wait_for_active(kind.title)
        return window

    def shown(self, kind):
        """The visible windows of that kind: one at most."""
        return self.reader.windows_like(kind.title, kind.content)

    def close_window(self):
        """Closes the one that was opened last."""
        self.press("ctrl+w")
        wait_until(lambda: self.window_id not in self.desktop.windows(), "a hidden window")

    def click(self, thing):
        x, y = thing.centre()
        self.desktop.click(x * self.scale, y * self.scale)

    def press(self, *keys):
        self.desktop.xdotool("key", *keys)

    @staticmethod
    def focused(window):
        """What has the keyboard, or nothing. The current item of a list says always that it has."""
        return next((thing for thing in window.everything()
                     if "focused" in thing.states() and thing.role() != "list item"), None)

    def tab_to(self, window, thing):
        """Walks with the tab key until that has the keyboard."""
        passed = []
        while "focused" not in thing.states():
            before = self.focused(window)
            self.press("Tab")
            wait_until(lambda: self.focused(window) not in (None, before), "another focus", 5)
            passed.append(self.focused(window))
            self.assertLess(len(passed), 20, f"the tab key does not lead to {thing.name()!r}")
