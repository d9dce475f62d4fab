"""On desktops without X11."""

import os
import unittest

from support.accessibility import VARIABLES, Accessibility
from support.case import ProgramCase
from support.looks import ARTEFACTS
from support.waiting import spend, wait_until
from support.wayland import BareWaylandDesktop, WaylandDesktop
from support.wayland_client import activation_token
from support.windows import LOG, ONBOARDING, SETTINGS, STATUS

BUILD = os.environ["VALDORN_BUILD"]
WINDOWS = (ONBOARDING, SETTINGS, LOG, STATUS)
TITLES = [kind.title for kind in WINDOWS]


class WaylandCase(ProgramCase):
    make_desktop = WaylandDesktop

    def begin(self, **options):
        self.puppets, = self.puppet_runners({})
        self.program, self.item = self.start_with_item(**options)
        self.daemon = self.puppets.wait_for_one()

    def open(self, kind):
        self.item.menu().choose(kind.entry)
        self.desktop.wait_for_active(kind.title)

    def assert_daemon_is_asked_once(self):
        self.puppets.wait_for_none(5)
        spend(0.2)  # for a second signal to arrive
        self.assertEqual(self.puppets.signals(self.daemon), ["SIGTERM"])


class WindowsTest(WaylandCase):
    def test_open_and_close_and_the_menu_quits(self):
        self.begin()
        wait_until(lambda: "Status: Connected — idle" in self.item.menu().labels(), "the status")
        self.assertEqual(len(self.item.pixmaps()), 5)
        for kind in WINDOWS:
            self.open(kind)
        self.assertEqual(sorted(self.desktop.titles()), sorted(TITLES))
        self.assertEqual(self.desktop.content(STATUS.title)[2:], (480, 260))
        os.makedirs(ARTEFACTS, exist_ok=True)
        self.desktop.take_screen(os.path.join(ARTEFACTS, "wayland.png"))
        for title in set(TITLES):
            self.desktop.close_windows(title)
        wait_until(lambda: not self.desktop.titles(), "no window", 5)
        self.open(STATUS)
        self.item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(8), 0)
        self.assert_daemon_is_asked_once()


class FarewellTest(WaylandCase):
    def test_waits_for_no_answer_of_qts(self):
        """Qt's farewell to the compositor never returned once in some hundred ends: two threads of
        its own waited for each other."""
        self.begin(LD_PRELOAD=os.path.join(BUILD, "bin", "wl_display_disconnect.so"),
                   ASAN_OPTIONS=self.desktop.environment["ASAN_OPTIONS"] +
                   ":verify_asan_link_order=0")
        self.open(STATUS)
        self.item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(8), 0)
        self.assert_daemon_is_asked_once()


class ActivationTest(WaylandCase):
    """The status window is behind the window of another program: an instance of another home."""

    def setUp(self):
        super().setUp()
        self.begin()
        self.second_start()
        self.desktop.wait_for_active(STATUS.title)
        self.work_elsewhere()

    def assert_comes_to_the_front(self):
        self.desktop.wait_for_active(STATUS.title, 5)
        self.assertEqual(self.desktop.titles().count(STATUS.title), 1)

    def test_a_second_start_hands_its_token_on(self):
        # Nobody has given it leave.
        self.second_start()
        spend(0.5)
        self.assertEqual(self.desktop.focused(), SETTINGS.title)
        self.second_start(XDG_ACTIVATION_TOKEN=activation_token(self.desktop))
        self.assert_comes_to_the_front()

    def test_a_second_start_finds_its_token_where_older_launchers_put_it(self):
        self.second_start(DESKTOP_STARTUP_ID=activation_token(self.desktop))
        self.assert_comes_to_the_front()

    def test_the_bar_hands_its_token_on(self):
        self.item.hand_over(activation_token(self.desktop))
        self.item.menu().choose(STATUS.entry)
        self.assert_comes_to_the_front()


class BareCompositorTest(WaylandCase):
    make_desktop = BareWaylandDesktop

    def test_shows_windows_all_the_same(self):
        reader = Accessibility(self.desktop)
        self.addCleanup(reader.close)
        self.begin(**VARIABLES)
        self.assertEqual(len(self.item.pixmaps()), 5)
        self.item.menu().choose(LOG.entry)
        wait_until(lambda: reader.windows_like(LOG.title), "the log window")
        self.second_start(XDG_ACTIVATION_TOKEN="of-no-use")
        wait_until(lambda: reader.windows_like(STATUS.title), "the status window")
        self.expect_stderr(self.program)
        self.desktop.end_display()
        self.assertEqual(self.program.wait_for_end(5), 1)
        self.assert_daemon_is_asked_once()


class EndOfSessionTest(WaylandCase):
    def test_when_the_compositor_goes(self):
        self.begin()
        self.open(SETTINGS)
        self.expect_stderr(self.program)
        self.desktop.end_display()
        self.assertEqual(self.program.wait_for_end(5), 1)
        self.assert_daemon_is_asked_once()


if __name__ == "__main__":
    unittest.main()
