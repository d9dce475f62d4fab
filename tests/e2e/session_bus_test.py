"""A session bus that goes and comes back, with a program that has to live on meanwhile."""

import signal
import unittest

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import kill, run_once
from support.waiting import spend, wait_until
from support.windows import STATUS


class BusCase(ProgramCase):
    """Each test has a desktop of its own, whose bus is the test's to take away."""

    window_manager = usual_window_manager

    @classmethod
    def setUpClass(cls):
        """Makes none that they share."""

    def setUp(self):
        super().setUp()
        self.desktop = self.make_desktop()
        self.addCleanup(self.desktop.close)
        self.puppets, = self.puppet_runners({})

    def begin(self):
        self.program = self.start()
        self.daemon = self.puppets.wait_for_one()

    def restart_bus(self, pause=0.0):
        self.desktop.bus.end()
        spend(pause)
        self.desktop.bus.begin()


class RestartedBusTest(BusCase):
    def test_the_item_comes_back_with_each_bus(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host, seconds=20)
        for pause in (0, 1.5, 0):
            self.restart_bus(pause)
            host = self.new_host()
            item = self.assert_item_in(host)
            self.second_start()
            self.desktop.wait_for_active(STATUS.title, 5)
            self.desktop.close_last(STATUS.title)
        self.assertEqual(self.puppets.living(), [self.daemon])
        item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_a_host_may_follow_the_bus_later(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host, seconds=20)
        host.close()
        self.restart_bus()
        spend(1.5)
        self.second_start()
        self.desktop.wait_for_active(STATUS.title, 5)
        item = self.assert_item_in(self.new_host())
        recorder = item.signals()
        self.addCleanup(recorder.close)
        item.menu().choose("Stop Runner")
        self.puppets.wait_for_none()
        wait_until(lambda: "Start Runner" in item.menu().labels(), "the menu", 2)
        # Each change travels once.
        spend(0.3)
        self.assertEqual(recorder.count("NewIcon"), 1)


class DeafBusTest(BusCase):
    """A bus that takes connections and answers nobody, as one may be that is about to end."""

    def test_holds_up_neither_the_end_nor_a_second_start(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host, seconds=20)
        self.desktop.bus.end()
        self.addCleanup(self.desktop.bus.take_connections_only().close)
        spend(1.5)  # for the program to look for the bus
        done = run_once(self.desktop, self.home)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("the session bus does not reach it", done.stderr)
        kill(self.program.process.pid, signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(2), 0)
        self.puppets.wait_for_none()
        self.assertEqual(self.puppets.signals(self.daemon), ["SIGTERM"])


if __name__ == "__main__":
    unittest.main()
