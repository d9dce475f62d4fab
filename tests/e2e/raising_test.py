"""Whom a second start brings to the front, while somebody works in another program."""

import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.windows import STATUS


class RaisingTest(ProgramCase):
    window_manager = usual_window_manager

    def setUp(self):
        super().setUp()
        self.puppet_runners({})
        self.start_with_item()

    def work_elsewhere(self):
        super().work_elsewhere()
        self.desktop.type("abc")

    def wait_for_status(self):
        return self.desktop.wait_for_active(STATUS.title, 5)

    def stacking(self):
        """The numbers of the windows, from the lowest to the highest."""
        shown = self.desktop.property("-root", "_NET_CLIENT_LIST_STACKING")
        return [int(number, 16) for number in shown.partition("#")[2].split(",")]

    def assert_in_front(self):
        window = self.wait_for_status()
        self.assertEqual(self.stacking()[-1], int(window))
        self.assertEqual(list(self.desktop.windows().values()).count(STATUS.title), 1)

    def test_a_window_that_is_behind_another(self):
        self.second_start()
        self.wait_for_status()
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_is_not_there_yet(self):
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_was_closed(self):
        self.second_start()
        self.wait_for_status()
        self.desktop.close_last(STATUS.title)
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()

    def test_a_window_that_is_minimised(self):
        self.second_start()
        self.desktop.xdotool("windowminimize", self.wait_for_status())
        self.work_elsewhere()
        self.second_start()
        self.assert_in_front()


if __name__ == "__main__":
    unittest.main()
