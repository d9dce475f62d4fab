"""Status bars that come late, or not at all."""

import signal
import time
import unittest

from support.accessibility import VARIABLES, Accessibility
from support.case import ProgramCase
from support.desktop import Desktop, usual_window_manager
from support.program import kill
from support.waiting import AT_ONCE, spend, wait_until
from support.wayland import WaylandDesktop
from support.wayland_client import Mouse
from support.windows import STATUS

WAITING_TIME = 30.0
STATUS_HEIGHT = 260


def managed_desktop():
    return Desktop(window_manager=usual_window_manager)


class Place:
    """A program on a desktop of its own."""

    def __init__(self, case, name, make_desktop=managed_desktop, begin_on=None, **variables):
        self.name = name
        self._case = case
        self.desktop = make_desktop()
        case.addCleanup(self.desktop.close)
        self.home = case.new_home()
        self.puppets, = case.puppet_runners({}, home=self.home)
        if begin_on:
            begin_on(self.desktop)
        self.program = case.start(home=self.home, desktop=self.desktop, **variables)
        self.begun = time.monotonic()
        self.puppets.wait_for_one()

    def age(self):
        return time.monotonic() - self.begun

    def new_host(self):
        return self._case.new_host(self.desktop)

    def assert_item_at_once(self):
        """In a host that comes now."""
        self._case.assert_item_in(self.new_host(), "Quit Valdorn")

    def assert_status_window_with_menu(self):
        wait_until(lambda: list(self.desktop.windows().values()) == [STATUS.title],
                   f"the status window, {self.name}", 8)
        self.assert_menu_bar()

    def assert_menu_bar(self):
        wait_until(lambda: self.status_height() > STATUS_HEIGHT + 10,
                   f"the status window with a menu, {self.name}", 2)

    def assert_status_window_without_menu(self):
        wait_until(lambda: self.status_height() == STATUS_HEIGHT,
                   f"the status window without the menu, {self.name}", AT_ONCE)

    def status_height(self):
        windows = [number for number, title in self.desktop.windows().items()
                   if title == STATUS.title]
        return self.desktop.geometry(windows[0])[3] if windows else 0

    def second_start(self):
        self._case.second_start(self.home, self.desktop)

    def choose(self, key):
        """Opens the menu in the window and takes the first entry from above or below."""
        window, = self.desktop.windows()
        x, y, *_ = self.desktop.geometry(window)
        before = len(self.desktop.all_visible())
        self.desktop.xdotool("mousemove", str(x + 20), str(y + 10), "click", "1")
        wait_until(lambda: len(self.desktop.all_visible()) > before, "the open menu", 5)
        self.desktop.xdotool("key", key, "Return")

    def is_docked(self):
        return bool(self.desktop.windows_of(self.program))


class WaylandPlace(Place):
    """Without X11; windows are read as a screen reader does."""

    def __init__(self, case, name):
        super().__init__(case, name, WaylandDesktop, begin_on=self._join, **VARIABLES)

    def _join(self, desktop):
        self._mouse = Mouse(desktop)
        self._case.addCleanup(self._mouse.close)
        self._reader = Accessibility(desktop)
        self._case.addCleanup(self._reader.close)

    def status_height(self):
        if STATUS.title not in self.desktop.titles():
            return 0
        return self.desktop.content(STATUS.title)[3]

    def choose_by_mouse(self, entry):
        """From the menu in the window."""
        window, = self._reader.windows_like(STATUS.title)
        for name in ("Valdorn", entry):
            x, y = window.find("menu item", name).centre()
            left, top, *_ = self.desktop.content(STATUS.title)
            self._mouse.click(left + x, top + y)


class LateHostsTest(ProgramCase):
    """Many programs wait at the same time, each on a desktop of its own: for hosts that come sooner
    or later, for one that has gone, without a bus, after a restart of the bus, beside a tray of the
    old kind."""

    def setUp(self):
        super().setUp()
        self.plan = []

    def at(self, place, seconds, *actions):
        """What is done when the program is so old."""
        self.plan.append((place.begun + seconds, place.name, actions))

    def follow_plan(self):
        for moment, name, actions in sorted(self.plan, key=lambda step: step[0]):
            spend(max(0.0, moment - time.monotonic()))
            with self.subTest(name):
                for action in actions:
                    action()

    def assert_no_window(self, place):
        self.assertEqual(place.desktop.windows(), {}, place.name)

    def waits_in_vain(self, place, seconds=WAITING_TIME):
        """Shows nothing at first, and then the window with the menu."""
        self.at(place, seconds - 3, lambda: self.assert_no_window(place))
        self.at(place, seconds + 4, place.assert_status_window_with_menu)

    def finds_host(self, place, seconds, *before):
        self.at(place, seconds, *before, place.assert_item_at_once)

    def finds_host_after_all(self, place, seconds, *before):
        """The menu is in the item then, and not in the window any more."""
        self.finds_host(place, seconds, *before)
        self.at(place, seconds, place.assert_status_window_without_menu)

    def test_stay_usable_and_find_their_place_at_last(self):
        for begin in (self.begin_a_minute_early, self.begin_a_bit_early, self.begin_and_lose_host,
                      self.begin_without_bus, self.begin_and_lose_bus, self.begin_on_a_new_bus,
                      self.begin_before_the_bus, self.begin_and_lose_voice,
                      self.begin_on_a_silent_bus, self.begin_beside_an_old_tray,
                      self.begin_on_wayland, self.begin_in_time):
            begin()
        self.follow_plan()

    def begin_a_minute_early(self):
        place = Place(self, "60 s")
        self.waits_in_vain(place)
        self.at(place, WAITING_TIME + 6, lambda: place.choose("Down"), place.puppets.wait_for_none)
        self.finds_host_after_all(place, 60)

    def begin_a_bit_early(self):
        place = Place(self, "31 s")
        self.finds_host_after_all(place, 31)

    def begin_and_lose_host(self):
        place = Place(self, "lost host")
        host = place.new_host()
        host.wait_for_item()
        host.close()
        self.waits_in_vain(place, place.age() + WAITING_TIME)
        self.finds_host_after_all(place, 45)

    def begin_without_bus(self):
        place = Place(self, "no bus", DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        self.waits_in_vain(place)
        self.at(place, 40, lambda: place.choose("Up"),
                lambda: self.assertEqual(place.program.wait_for_end(), 0))

    def begin_and_lose_bus(self):
        place = Place(self, "lost bus")
        place.new_host().wait_for_item()
        place.desktop.bus.end()
        self.waits_in_vain(place, place.age() + WAITING_TIME)
        self.finds_host_after_all(place, 45, place.desktop.bus.begin)
        self.at(place, 50, place.second_start)

    def begin_on_a_new_bus(self):
        """The old one has never had a host."""
        place = Place(self, "new bus")
        self.finds_host(place, 3, place.desktop.bus.end, place.desktop.bus.begin)

    def begin_before_the_bus(self):
        place = Place(self, "late bus", begin_on=lambda desktop: desktop.bus.end())
        self.finds_host(place, 3, place.desktop.bus.begin)
        self.at(place, 6, place.second_start)

    def begin_and_lose_voice(self):
        """The bus that comes back takes connections and answers nobody."""
        place = Place(self, "silent bus")
        place.desktop.bus.end()
        self.addCleanup(place.desktop.bus.take_connections_only().close)
        self.waits_in_vain(place)
        self.at(place, 40, lambda: place.choose("Up"),
                lambda: self.assertEqual(place.program.wait_for_end(2), 0))

    def begin_on_a_silent_bus(self):
        """Qt is kept from it, and everything comes by as much later as it was waited for."""
        def silence(desktop):
            desktop.bus.end()
            self.addCleanup(desktop.bus.take_connections_only().close)

        place = Place(self, "silent from the start", begin_on=silence)
        self.expect_stderr(place.program)
        self.at(place, WAITING_TIME + 6, place.assert_status_window_with_menu)
        self.at(place, 45, lambda: kill(place.program.process.pid, signal.SIGTERM),
                lambda: self.assertEqual(place.program.wait_for_end(2), 0),
                place.puppets.wait_for_none)

    def begin_beside_an_old_tray(self):
        place = Place(self, "old tray", Desktop, begin_on=lambda desktop: desktop.start(
            "trayer", "--edge", "top", "--SetDockType", "false", "--widthtype", "pixel",
            "--width", "100", "--height", "24"))
        self.at(place, WAITING_TIME - 3, lambda: self.assertFalse(place.is_docked()))
        self.at(place, WAITING_TIME + 4, lambda: self.assert_docked(place), place.desktop.bus.end)
        self.at(place, WAITING_TIME + 6, lambda: self.assert_docked(place))

    def assert_docked(self, place):
        wait_until(place.is_docked, "an icon in the old tray", 2)
        self.assertNotIn(STATUS.title, place.desktop.windows().values())

    def begin_on_wayland(self):
        place = WaylandPlace(self, "Wayland")
        self.at(place, WAITING_TIME - 3, lambda: self.assertEqual(place.desktop.titles(), []))
        self.at(place, WAITING_TIME + 4, place.assert_menu_bar,
                lambda: place.choose_by_mouse("Stop Runner"), place.puppets.wait_for_none)
        self.finds_host_after_all(place, 45)

    def begin_in_time(self):
        for seconds in (29, 15, 5, 1):
            place = Place(self, f"{seconds} s", Desktop)
            self.finds_host(place, seconds)
            if seconds == 15:
                self.at(place, 3, place.second_start, lambda asked=place: wait_until(
                    asked.status_height, "the status window", AT_ONCE))


if __name__ == "__main__":
    unittest.main()
