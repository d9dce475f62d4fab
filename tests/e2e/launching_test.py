"""Started by a launcher through the desktop entry: what it hands over brings a window to the front,
and it hears that the launch is over."""

import os
import subprocess
import sys
import unittest

from support import launcher
from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import VALDORN, environment
from support.startup_listener import StartupListener
from support.waiting import wait_until
from support.wayland import WaylandDesktop
from support.wayland_client import activation_token
from support.windows import LOG, STATUS

ENTRY = os.path.join(os.environ["VALDORN_SOURCE"], "resources/desktop/org.valdorn.valdorn.desktop")


class LaunchCase(ProgramCase):
    def setUp(self):
        super().setUp()
        self.puppets, = self.puppet_runners({})

    def launch(self, token, *action):
        path = f"{os.environ['PATH']}:{os.path.dirname(VALDORN)}"
        subprocess.run([sys.executable, "-B", launcher.__file__, ENTRY, token, *action], check=True,
                       env=environment(self.desktop, self.home, PATH=path), timeout=30,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class TokenTest(LaunchCase):
    """On Wayland it takes a token to come in front of another program."""

    make_desktop = WaylandDesktop

    def test_second_start_and_action_come_to_the_front(self):
        self.start_with_item()
        self.launch("of-no-use", "log")
        self.desktop.wait_for_active(LOG.title)
        self.launch("of-no-use")
        wait_until(lambda: STATUS.title in self.desktop.titles(), "the status window")
        self.work_elsewhere()
        for window, action in ((STATUS, ()), (LOG, ("log",))):
            self.launch(activation_token(self.desktop), *action)
            self.desktop.wait_for_active(window.title, 5)


class BusyPointerTest(LaunchCase):
    """On X11 the pointer looks busy until the launch is over."""

    window_manager = usual_window_manager

    def setUp(self):
        super().setUp()
        self.listener = StartupListener(self.desktop)
        self.addCleanup(self.listener.close)

    def wait_for_end_of(self, launch):
        wait_until(lambda: f'remove: ID="{launch}"' in self.listener.ended(),
                   f"the end of {launch}", 5)

    def test_each_launch_is_completed(self):
        program, _ = self.start_with_item(DESKTOP_STARTUP_ID="first_TIME1",
                                          XDG_ACTIVATION_TOKEN="first_TIME1")
        self.wait_for_end_of("first_TIME1")
        self.assertEqual(self.desktop.windows(), {})
        self.assert_children_know_nothing()
        self.launch("second_TIME2")
        self.wait_for_end_of("second_TIME2")
        self.desktop.close_last(STATUS.title)
        self.launch("action_TIME3", "log")
        self.wait_for_end_of("action_TIME3")
        self.launch("quit_TIME4", "quit")
        self.wait_for_end_of("quit_TIME4")
        self.assertEqual(program.wait_for_end(), 0)

    def assert_children_know_nothing(self):
        names = self.puppets.facts(self.puppets.wait_for_one())["environment"]
        self.assertFalse({"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"} & set(names))


if __name__ == "__main__":
    unittest.main()
