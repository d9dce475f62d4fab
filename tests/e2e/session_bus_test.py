"""A session bus that goes and comes back, with a program that has to live on meanwhile."""

import unittest

from support.case import ProgramCase
from support.desktop import Desktop, usual_window_manager
from support.program import run_once
from support.tray import TrayHost
from support.waiting import spend, wait_until

AT_ONCE = 2.0
STATUS_WINDOW = "Valdorn — Runner Status"
IDLE = "Status: Connected — idle"


class BusCase(ProgramCase):
    """Each test has a desktop of its own, whose bus is the test's to take away."""

    def setUp(self):
        super().setUp()
        self.desk = Desktop(window_manager=usual_window_manager)
        self.addCleanup(self.desk.close)
        self.puppets, = self.puppet_runners({})

    def new_host(self):
        host = TrayHost(self.desk.bus)
        self.addCleanup(host.close)
        return host

    def begin(self):
        self.program = self.start(desktop=self.desk)
        self.daemon = self.puppets.wait_for_one()

    def assert_item_within(self, host, seconds):
        item = wait_until(lambda: host.items and host.items[-1], "a status item", seconds)
        wait_until(lambda: IDLE in item.menu().labels(), "the status", 2)
        self.assertEqual(len(item.pixmaps()), 5)
        self.assertEqual(len(host.items), 1)
        return item

    def restart_bus(self, pause=0.0):
        self.desk.bus.end()
        spend(pause)
        self.desk.bus.begin()

    def assert_second_start_is_heard(self):
        done = run_once(self.desk, self.home)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        wait_until(lambda: STATUS_WINDOW in self.desk.windows().values(), "the status window", 5)

    def close_window(self):
        window, = self.desk.windows()
        wait_until(lambda: self.desk.active_window() == window, "an active window", 5)
        self.desk.xdotool("key", "ctrl+w")
        wait_until(lambda: not self.desk.windows(), "no window", 5)


class RestartedBusTest(BusCase):
    def test_the_item_comes_back_with_each_bus(self):
        host = self.new_host()
        self.begin()
        self.assert_item_within(host, 20)
        for pause in (0, 1.5, 0):
            self.restart_bus(pause)
            host = self.new_host()
            item = self.assert_item_within(host, AT_ONCE)
            self.assert_second_start_is_heard()
            self.close_window()
        self.assertEqual(self.puppets.living(), [self.daemon])
        item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_a_host_may_follow_the_bus_later(self):
        host = self.new_host()
        self.begin()
        self.assert_item_within(host, 20)
        host.close()
        self.restart_bus()
        spend(1.5)
        self.assert_second_start_is_heard()
        item = self.assert_item_within(self.new_host(), AT_ONCE)
        recorder = item.signals()
        self.addCleanup(recorder.close)
        item.menu().choose("Stop Runner")
        self.puppets.wait_for_none()
        wait_until(lambda: "Start Runner" in item.menu().labels(), "the menu", 2)
        # Each change travels once.
        spend(0.3)
        self.assertEqual(recorder.count("NewIcon"), 1)


if __name__ == "__main__":
    unittest.main()
