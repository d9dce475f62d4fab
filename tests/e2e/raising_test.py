"""Whom a second start brings to the front, while somebody works in another program."""

import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import run_once
from support.waiting import wait_until

STATUS = "Valdorn — Runner Status"
OTHER = "Valdorn"


class RaisingTest(ProgramCase):
    window_manager = usual_window_manager

    def setUp(self):
        super().setUp()
        self.puppet_runners({})
        self.start_with_item()

    def second_start(self, **more):
        done = run_once(self.desktop, self.home, **more)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def work_elsewhere(self):
        """In the settings of another home: a program of its own, as the window manager sees it."""
        home = self.new_home()
        self.puppet_runners({}, home=home)
        _, item = self.start_with_item(home=home)
        item.menu().choose("Settings…")
        self.wait_for_active(OTHER)
        self.desktop.type("abc")

    def wait_for_active(self, title):
        def active():
            window = self.desktop.active_window()
            return window if self.desktop.windows().get(window) == title else None
        return wait_until(active, f"{title!r} in front", 5)

    def stacking(self):
        """The numbers of the windows, from the lowest to the highest."""
        shown = self.desktop.property("-root", "_NET_CLIENT_LIST_STACKING")
        return [int(number, 16) for number in shown.partition("#")[2].split(",")]

    def assert_in_front(self):
        window = self.wait_for_active(STATUS)
        self.assertEqual(self.stacking()[-1], int(window))
        self.assertEqual(list(self.desktop.windows().values()).count(STATUS), 1)

    def test_a_window_that_is_behind_another(self):
        self.second_start()
        self.wait_for_active(STATUS)
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_is_not_there_yet(self):
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_was_closed(self):
        self.second_start()
        self.wait_for_active(STATUS)
        self.desktop.xdotool("key", "ctrl+w")
        wait_until(lambda: not self.desktop.windows(), "no window", 5)
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_is_minimised(self):
        self.second_start()
        self.desktop.xdotool("windowminimize", self.wait_for_active(STATUS))
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()


if __name__ == "__main__":
    unittest.main()
