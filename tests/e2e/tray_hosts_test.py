"""Status bars that come late, go, come back, or are not there at all."""

import os
import time
import unittest

from support.case import ProgramCase
from support.desktop import Desktop
from support.tray import TrayHost
from support.waiting import spend, stays_true, wait_until

WAITING_TIME = 30.0
AT_ONCE = 2.0
STATUS_WINDOW = "Valdorn — Runner Status"
STATUS_HEIGHT = 260


class HostCase(ProgramCase):
    def new_host(self, **options):
        host = TrayHost(self.desktop.bus, **options)
        self.addCleanup(host.close)
        return host

    def begin(self):
        self.puppets, = self.puppet_runners({})
        self.program = self.start()
        self.puppets.wait_for_one()

    def assert_item_within(self, host, seconds):
        item = wait_until(lambda: host.items and host.items[-1], "a status item", seconds)
        wait_until(lambda: "Status: Connected — idle" in item.menu().labels(), "the status", 2)
        self.assertEqual(len(item.pixmaps()), 5)
        return item


class LateHostTest(HostCase):
    def test_a_host_that_was_there_first(self):
        host = self.new_host()
        self.begin()
        self.assert_item_within(host, AT_ONCE)
        self.assertEqual(len(host.items), 1)

    def test_a_host_that_comes_a_second_later(self):
        self.begin()
        spend(1)
        host = self.new_host()
        item = self.assert_item_within(host, AT_ONCE)
        item.menu().choose("Stop Runner")
        self.puppets.wait_for_none()

    def test_a_host_that_comes_five_seconds_later(self):
        self.begin()
        spend(5)
        self.assert_item_within(self.new_host(), AT_ONCE)

    def test_a_watcher_whose_host_comes_later(self):
        host = self.new_host(hosted=False)
        self.begin()
        stays_true(lambda: not host.items, "no item yet", 1)
        host.begin_hosting()
        self.assert_item_within(host, AT_ONCE)


class RestartedHostTest(HostCase):
    def test_the_item_is_there_after_each_restart(self):
        host = self.new_host()
        self.begin()
        self.assert_item_within(host, AT_ONCE)
        for pause in (0, 0.1, 1, 0):
            host.close()
            spend(pause)
            host = self.new_host()
            self.assert_item_within(host, AT_ONCE)
            self.assertEqual(len(host.items), 1)
        # What changed while nobody looked is right afterwards.
        host.close()
        self.puppets.say('time="x" level=info msg="Running job with maxParallel=1"\n')
        spend(0.5)
        host = self.new_host()
        item = wait_until(lambda: host.items and host.items[-1], "a status item", AT_ONCE)
        wait_until(lambda: "Status: Building a job" in item.menu().labels(), "the status", 2)
        item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_lives_on_without_the_host(self):
        host = self.new_host()
        self.begin()
        self.assert_item_within(host, AT_ONCE)
        host.close()
        spend(1)
        self.assertTrue(self.program.is_running())
        self.assertEqual(len(self.puppets.living()), 1)


class NobodyThereTest(ProgramCase):
    """Four programs wait at the same time, each on a desktop of its own: one for a host that comes
    at last, one that loses its host, one without a bus, one beside a tray of the old kind."""

    window_manager = True

    def new_desktop(self, **options):
        desktop = Desktop(**options)
        self.addCleanup(desktop.close)
        return desktop

    def begin(self, desktop, **options):
        home = self.new_home()
        puppets, = self.puppet_runners({}, home=home)
        return self.start(home=home, desktop=desktop, **options), puppets

    def test_stays_usable_and_finds_its_place_at_last(self):
        lost, nobus, old = (self.new_desktop(window_manager=name != "old")
                            for name in ("lost", "nobus", "old"))
        old.start("trayer", "--edge", "top", "--SetDockType", "false", "--widthtype", "pixel",
                  "--width", "100", "--height", "24")
        host = TrayHost(lost.bus)
        lonely_program, lonely_puppets = self.begin(self.desktop)
        lost_program, _ = self.begin(lost)
        nobus_program, nobus_puppets = self.begin(
            nobus, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        old_program, _ = self.begin(old)
        begun = time.monotonic()
        host.wait_for_item()
        host.close()
        lonely_puppets.wait_for_one()
        nobus_puppets.wait_for_one()
        desktops = (self.desktop, lost, nobus)

        def nothing_yet():
            time.sleep(0.2)  # four programs want the processor too
            return not any(desktop.windows() for desktop in desktops)
        stays_true(nothing_yet, "no window", WAITING_TIME - 3 - (time.monotonic() - begun))
        self.assertFalse(self.docked(old, old_program))

        for name, desktop in zip(("lonely", "lost", "no bus"), desktops):
            with self.subTest(name):
                self.assert_status_window_with_menu(desktop)
        with self.subTest("old"):
            wait_until(lambda: self.docked(old, old_program), "an icon in the old tray", 5)
            self.assertEqual(list(old.windows().values()).count(STATUS_WINDOW), 0)
        with self.subTest("menu of the lonely one"):
            self.choose(self.desktop, "Down")
            lonely_puppets.wait_for_none()
        with self.subTest("menu without a bus"):
            self.choose(nobus, "Up")
            self.assertEqual(nobus_program.wait_for_end(), 0)
        for name, desktop in (("lonely", self.desktop), ("lost", lost)):
            with self.subTest("at last", name=name):
                late = TrayHost(desktop.bus)
                self.addCleanup(late.close)
                wait_until(lambda: late.items, "the item", AT_ONCE)
                wait_until(lambda: self.status_height(desktop) == STATUS_HEIGHT,
                           "a window without the menu", AT_ONCE)
                self.assertIn("Quit Valdorn", late.items[-1].menu().labels())
        self.assertTrue(lonely_program.is_running() and lost_program.is_running())

    def assert_status_window_with_menu(self, desktop):
        wait_until(lambda: list(desktop.windows().values()) == [STATUS_WINDOW],
                   "the status window", 8)
        wait_until(lambda: self.status_height(desktop) > STATUS_HEIGHT + 10, "the menu bar", 2)

    @staticmethod
    def status_height(desktop):
        windows = [number for number, title in desktop.windows().items() if title == STATUS_WINDOW]
        return desktop.geometry(windows[0])[3] if windows else 0

    def choose(self, desktop, key):
        """Opens the menu in the window and takes the first entry from above or below."""
        window, = desktop.windows()
        x, y, *_ = desktop.geometry(window)
        before = len(desktop.all_visible())
        desktop.xdotool("mousemove", str(x + 20), str(y + 10), "click", "1")
        wait_until(lambda: len(desktop.all_visible()) > before, "the open menu", 5)
        desktop.xdotool("key", key, "Return")

    @staticmethod
    def docked(desktop, program):
        return bool(desktop.windows_of(program))


if __name__ == "__main__":
    unittest.main()
