"""The four windows under a window manager."""

import re
import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.puppet import BLOCKED, DECLARED
from support.waiting import spend, wait_until
from support.windows import LOG, ONBOARDING, SETTINGS, STATUS

# Menu entry, title, width, height, resizable.
WINDOWS = [(kind.entry, kind.title, *more) for kind, *more in (
    (SETTINGS, 620, 400, False), (LOG, 720, 460, True), (STATUS, 480, 260, True),
    (ONBOARDING, 460, 300, False))]

# The window is centred before its frame is known.
FRAME_PIXELS = 16


class WindowsCase(ProgramCase):
    window_manager = usual_window_manager

    def begin(self, **options):
        self.puppets, = self.puppet_runners({}, **options)
        self.program, self.item = self.start_with_item()
        self.puppets.wait_for_one()
        self.menu = self.item.menu()

    def open(self, entry):
        """Chooses the entry; the number of its window, once that is the active one."""
        described, = [window for window in WINDOWS if window[0] == entry]
        self.menu.choose(entry)
        return wait_until(lambda: self.active_like(*described[1:]), f"the window of {entry!r}")

    def active_like(self, title, width, _, resizable):
        """The active window, if it fits. Two have the same title; they differ in their width."""
        window = self.desktop.active_window()
        if self.desktop.windows().get(window) != title:
            return None
        return window if resizable or self.desktop.geometry(window)[2] == width else None

    def close_active(self, keys):
        window = self.desktop.active_window()
        self.desktop.xdotool("key", keys)
        wait_until(lambda: window not in self.desktop.windows(), "a hidden window")


class OpeningTest(WindowsCase):
    def test_each_has_its_title_size_and_place(self):
        self.begin()
        for entry, title, width, height, resizable in WINDOWS:
            with self.subTest(entry):
                window = self.open(entry)
                self.assertEqual(self.desktop.windows()[window], title)
                x, y, *size = self.desktop.geometry(window)
                self.assertEqual(size, [width, height])
                self.assertAlmostEqual(x + width / 2, 640, delta=FRAME_PIXELS)
                self.assertAlmostEqual(y + height / 2, 400, delta=2 * FRAME_PIXELS)
                self.assertEqual(self.is_resizable(window), resizable)

    def is_resizable(self, window):
        hints = self.desktop.property("-id", window, "WM_NORMAL_HINTS")
        limits = [re.search(f"{name} size: (.*)", hints) for name in ("minimum", "maximum")]
        return not (all(limits) and limits[0].group(1) == limits[1].group(1))

    def test_each_is_one_window_however_often_it_is_opened(self):
        self.begin()
        opened = {entry: self.open(entry) for entry, *_ in WINDOWS}
        self.assertEqual(sorted(self.desktop.windows()), sorted(opened.values()))
        self.assertEqual(len(opened), 4)
        for entry, window in opened.items():
            self.assertEqual(self.open(entry), window)
        self.assertEqual(len(self.desktop.windows()), 4)

    def test_a_closed_one_comes_back_as_it_was(self):
        self.begin()
        for entry, title, *_ in WINDOWS:
            for keys in ("ctrl+w", "alt+F4"):
                with self.subTest(entry, keys=keys):
                    window = self.open(entry)
                    self.desktop.xdotool("windowmove", window, "100", "150")
                    wait_until(lambda: self.desktop.geometry(window)[0] < 110, "the new place")
                    place = self.desktop.geometry(window)
                    self.close_active(keys)
                    window = self.open(entry)
                    self.assertEqual(self.desktop.windows(), {window: title})
                    self.assertEqual(self.desktop.geometry(window), place)
                    self.close_active(keys)

    def test_a_minimised_one_comes_back(self):
        self.begin()
        window = self.open("Show Log…")
        self.desktop.xdotool("windowminimize", window)
        wait_until(lambda: not self.desktop.windows(), "a minimised window")
        self.assertEqual(self.open("Show Log…"), window)

    def test_keeps_the_size_that_the_user_gave_it(self):
        self.begin()
        window = self.open("Show Log…")
        self.desktop.xdotool("windowsize", window, "800", "500")
        wait_until(lambda: self.desktop.geometry(window)[2:] == (800, 500), "the new size")
        self.close_active("ctrl+w")
        window = self.open("Show Log…")
        self.assertEqual(self.desktop.geometry(window)[2:], (800, 500))

    def test_closing_the_last_one_ends_nothing(self):
        self.begin()
        self.open("Settings…")
        self.close_active("alt+F4")
        spend(0.3)
        self.assertTrue(self.program.is_running())
        self.assertIn("Status: Connected — idle", self.menu.labels())

    def test_belongs_to_the_desktop_entry_and_has_its_icon(self):
        self.begin()
        window = self.open("Settings…")
        self.assertEqual(self.desktop.property("-id", window, "WM_CLASS"),
                         'WM_CLASS(STRING) = "valdorn", "Valdorn"')
        self.assertIn("Icon", self.desktop.property("-id", window, "_NET_WM_ICON"))


class QuietTest(WindowsCase):
    def clients(self):
        """What a task list shows."""
        return re.findall("0x[0-9a-f]+", self.desktop.property("-root", "_NET_CLIENT_LIST"))

    def test_shows_no_window_of_its_own_accord(self):
        self.begin()
        wait_until(lambda: "Status: Connected — idle" in self.menu.labels(), "a connected runner")
        self.assertEqual(self.clients(), [])
        self.assertEqual(self.desktop.windows(), {})

    def test_the_menu_is_no_window_for_a_task_list(self):
        self.begin()
        self.item.activate()
        wait_until(lambda: self.desktop.windows_of(self.program), "the menu")
        self.assertEqual(self.clients(), [])

    def test_a_closed_window_leaves_the_task_list(self):
        self.begin()
        self.open("Settings…")
        self.assertEqual(len(self.clients()), 1)
        self.close_active("ctrl+w")
        wait_until(lambda: not self.clients(), "an empty task list")


class OnboardingTest(WindowsCase):
    def wait_for_window(self):
        wait_until(lambda: list(self.desktop.windows().values()) == [ONBOARDING.title],
                   "the introduction")
        window, = self.desktop.windows()
        self.assertEqual(self.desktop.geometry(window)[2:], (460, 300))
        wait_until(lambda: self.desktop.active_window() == window, "an active introduction")

    def test_comes_up_at_launch_until_a_runner_has_connected(self):
        self.begin(connected=False, first="")
        self.wait_for_window()
        self.close_active("ctrl+w")
        self.open("Set Up…")
        self.program.quit()
        self.program, self.item = self.start_with_item()
        self.wait_for_window()
        self.puppets.say(DECLARED)
        wait_until(lambda: "Status: Connected — idle" in self.item.menu().labels(), "the status")
        self.program.quit()
        self.program, self.item = self.start_with_item()
        wait_until(lambda: "Status: Starting…" in self.item.menu().labels(), "the status")
        spend(0.5)
        self.assertEqual(self.desktop.windows(), {})

    def test_comes_back_when_the_network_is_refused(self):
        self.begin(connected=False, first="")
        self.wait_for_window()
        self.close_active("ctrl+w")
        self.puppets.say(BLOCKED)
        self.wait_for_window()

    def test_does_not_come_back_once_a_runner_has_connected(self):
        self.begin(first=DECLARED + BLOCKED)
        wait_until(lambda: "Status: No local-network access" in self.menu.labels(), "the status")
        spend(0.5)
        self.assertEqual(self.desktop.windows(), {})

    def test_comes_up_without_any_registered_runner(self):
        self.program, self.item = self.start_with_item()
        self.wait_for_window()
        self.assertIn("Status: Not registered", self.item.menu().labels())


if __name__ == "__main__":
    unittest.main()
