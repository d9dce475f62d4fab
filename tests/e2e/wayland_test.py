"""On desktops without X11."""

import os
import unittest

from support.accessibility import VARIABLES, Accessibility
from support.case import ProgramCase
from support.looks import ARTEFACTS
from support.program import run_once
from support.waiting import spend, wait_until
from support.wayland import BareWaylandDesktop, WaylandDesktop
from support.wayland_client import activation_token

STATUS = "Valdorn — Runner Status"
WINDOWS = {"Set Up…": "Valdorn", "Settings…": "Valdorn", "Show Log…": "Valdorn — Log",
           "Runner Status…": STATUS}


class WaylandCase(ProgramCase):
    make_desktop = WaylandDesktop

    def begin(self, **options):
        self.puppets, = self.puppet_runners({})
        self.program, self.item = self.start_with_item(**options)
        self.daemon = self.puppets.wait_for_one()

    def open(self, entry):
        self.item.menu().choose(entry)
        wait_until(lambda: self.desktop.focused() == WINDOWS[entry], f"{entry!r} in front")

    def assert_daemon_is_asked_once(self):
        self.puppets.wait_for_none(5)
        spend(0.2)  # for a second signal to arrive
        self.assertEqual(self.puppets.signals(self.daemon), ["SIGTERM"])

    def second_start(self, **more):
        done = run_once(self.desktop, self.home, **more)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))


class WindowsTest(WaylandCase):
    def test_open_and_close_and_the_menu_quits(self):
        self.begin()
        wait_until(lambda: "Status: Connected — idle" in self.item.menu().labels(), "the status")
        self.assertEqual(len(self.item.pixmaps()), 5)
        for entry in WINDOWS:
            self.open(entry)
        self.assertEqual(sorted(self.desktop.titles()), sorted(WINDOWS.values()))
        self.assertEqual(self.desktop.content(STATUS)[2:], (480, 260))
        os.makedirs(ARTEFACTS, exist_ok=True)
        self.desktop.take_screen(os.path.join(ARTEFACTS, "wayland.png"))
        for title in set(WINDOWS.values()):
            self.desktop.close_windows(title)
        wait_until(lambda: not self.desktop.titles(), "no window", 5)
        self.open("Runner Status…")
        self.item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(5), 0)
        self.assert_daemon_is_asked_once()


class ActivationTest(WaylandCase):
    """The status window is behind the window of another program: an instance of another home."""

    def setUp(self):
        super().setUp()
        self.begin()
        self.second_start()
        wait_until(lambda: self.desktop.focused() == STATUS, "the status window")
        home = self.new_home()
        self.puppet_runners({}, home=home)
        _, item = self.start_with_item(home=home)
        item.menu().choose("Settings…")
        wait_until(lambda: self.desktop.focused() == "Valdorn", "another program in front")

    def assert_comes_to_the_front(self):
        wait_until(lambda: self.desktop.focused() == STATUS, "the status window in front", 5)
        self.assertEqual(self.desktop.titles().count(STATUS), 1)

    def test_a_second_start_hands_its_token_on(self):
        # Nobody has given it leave.
        self.second_start()
        spend(0.5)
        self.assertEqual(self.desktop.focused(), "Valdorn")
        self.second_start(XDG_ACTIVATION_TOKEN=activation_token(self.desktop))
        self.assert_comes_to_the_front()

    def test_a_second_start_finds_its_token_where_older_launchers_put_it(self):
        self.second_start(DESKTOP_STARTUP_ID=activation_token(self.desktop))
        self.assert_comes_to_the_front()

    def test_the_bar_hands_its_token_on(self):
        self.item.hand_over(activation_token(self.desktop))
        self.item.menu().choose("Runner Status…")
        self.assert_comes_to_the_front()


class BareCompositorTest(WaylandCase):
    make_desktop = BareWaylandDesktop

    def test_shows_windows_all_the_same(self):
        reader = Accessibility(self.desktop)
        self.addCleanup(reader.close)
        self.begin(**VARIABLES)
        self.assertEqual(len(self.item.pixmaps()), 5)
        self.item.menu().choose("Show Log…")
        wait_until(lambda: reader.windows_like(WINDOWS["Show Log…"]), "the log window")
        self.second_start(XDG_ACTIVATION_TOKEN="of-no-use")
        wait_until(lambda: reader.windows_like(STATUS), "the status window")
        self.expect_stderr(self.program)
        self.desktop.end_display()
        self.assertEqual(self.program.wait_for_end(5), 1)
        self.assert_daemon_is_asked_once()


class EndOfSessionTest(WaylandCase):
    def test_when_the_compositor_goes(self):
        self.begin()
        self.open("Settings…")
        self.expect_stderr(self.program)
        self.desktop.end_display()
        self.assertEqual(self.program.wait_for_end(5), 1)
        self.assert_daemon_is_asked_once()


if __name__ == "__main__":
    unittest.main()
