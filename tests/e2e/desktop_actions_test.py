"""The actions of the desktop entry, sent as a desktop sends them: to the running instance, or to
one that the session bus starts for the purpose."""

import configparser
import os
import shlex
import shutil
import signal
import subprocess
import tempfile
import unittest
from unittest import mock

import dbus

from support.case import ProgramCase
from support.desktop import usual_window_manager
from support.program import VALDORN, environment, is_alive, kill
from support.waiting import spend, stays_true, wait_until
from support.wayland import WaylandDesktop
from support.wayland_client import activation_token
from support.windows import LOG, SETTINGS, STATUS

ID = "org.valdorn.valdorn"
RESOURCES = os.path.join(os.environ["VALDORN_SOURCE"], "resources")
FOLDER = os.path.join(RESOURCES, "desktop")
ICONS = os.path.join(RESOURCES, "icons")

# Action, title of the window that it opens.
WINDOWS = (("runner-status", STATUS.title), ("settings", SETTINGS.title), ("log", LOG.title))


def entry():
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    parser.read(os.path.join(FOLDER, ID + ".desktop"), encoding="utf-8")
    return parser


def command_of(action):
    return shlex.split(entry()[f"Desktop Action {action}"]["Exec"])


def install_service(data_folder):
    """Tells the session bus how to start the program, as an installation does."""
    folder = os.path.join(data_folder, "dbus-1/services")
    os.makedirs(folder)
    with open(os.path.join(FOLDER, ID + ".service.in")) as file:
        service = file.read().replace("@CMAKE_INSTALL_FULL_BINDIR@/valdorn", VALDORN)
    with open(os.path.join(folder, ID + ".service"), "w") as file:
        file.write(service)


class ActingCase(ProgramCase):
    def act(self, action, **more):
        done = subprocess.run(command_of(action), capture_output=True, text=True, timeout=30,
                              env=environment(self.desktop, self.home, **more))
        self.assert_went_quietly(done)


class ActionCase(ActingCase):
    window_manager = usual_window_manager

    @classmethod
    def setUpClass(cls):
        data = tempfile.mkdtemp(prefix="valdorn-data.")
        cls.addClassCleanup(shutil.rmtree, data)
        install_service(data)
        # Where the bus, which is about to be started, finds its services.
        with mock.patch.dict(os.environ, XDG_DATA_DIRS=data):
            super().setUpClass()

    def setUp(self):
        super().setUp()
        self.puppets, = self.puppet_runners({})
        connection = self.desktop.bus.connect()
        self.bus = connection.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         introspect=False)
        # What a session tells its bus, so that what the bus starts has it, too.
        self.bus.UpdateActivationEnvironment(environment(self.desktop, self.home))

    def owner(self):
        """The process that owns the application's name, if any does."""
        try:
            return int(self.bus.GetConnectionUnixProcessID(ID))
        except dbus.exceptions.DBusException:
            return None

    def started_by_bus(self):
        """The process that the bus has started, ended with the test."""
        pid = wait_until(self.owner, "an instance on the bus")
        self.addCleanup(self.end, pid)
        return pid

    @staticmethod
    def end(pid):
        kill(pid, signal.SIGTERM)
        wait_until(lambda: not is_alive(pid), "the end of Valdorn")


class EntryTest(unittest.TestCase):
    def test_starts_what_is_installed(self):
        main = entry()["Desktop Entry"]
        self.assertEqual(main["Exec"], os.path.basename(VALDORN))
        self.assertEqual(main["Icon"], ID)
        self.assertTrue(os.path.isfile(os.path.join(ICONS, main["Icon"] + ".svg")))

    def test_has_the_actions_that_the_program_answers(self):
        actions = entry()["Desktop Entry"]["Actions"].strip(";").split(";")
        self.assertEqual(actions, [action for action, _ in WINDOWS] + ["quit"])
        for action in actions:
            self.assertEqual(command_of(action), ["gapplication", "action", ID, action])


class RunningTest(ActionCase):
    def test_each_window_comes_to_the_front(self):
        program, _ = self.start_with_item()
        for action, title in WINDOWS:
            self.act(action)
            self.desktop.close_last(title)
        self.assertEqual(self.owner(), program.process.pid)
        self.assertEqual(len(self.puppets.pids()), 1)

    def test_quit_is_the_quit_of_the_menu(self):
        program, _ = self.start_with_item()
        daemon = self.puppets.wait_for_one()
        self.act("quit")
        self.assertEqual(program.wait_for_end(), 0)
        self.puppets.wait_for_none()
        self.assertEqual(self.puppets.signals(daemon), ["SIGTERM"])
        self.assertFalse(self.owner())

    def test_the_next_instance_takes_over_from_the_first(self):
        other = self.new_home()
        self.puppet_runners({}, home=other)
        first, _ = self.start_with_item()
        second, _ = self.start_with_item(home=other)
        self.assertEqual(self.owner(), first.process.pid)
        self.act("quit")
        first.wait_for_end()
        self.assertEqual(self.owner(), second.process.pid)
        self.act("log")
        self.desktop.close_last(LOG.title)
        self.assertTrue(second.is_running())


class NotRunningTest(ActionCase):
    def test_each_window_comes_with_the_program(self):
        host = self.host()
        for count, (action, title) in enumerate(WINDOWS, start=1):
            self.act(action)
            pid = self.started_by_bus()
            self.desktop.close_last(title)
            wait_until(lambda: len(host.items) == count, "a status item")
            daemon = self.puppets.wait_for_one()
            # They were not started by the bus, and must not believe so.
            self.assertEqual([name for name in self.puppets.facts(daemon)["environment"]
                              if name.startswith("DBUS_STARTER")], [])
            self.act("quit")
            wait_until(lambda: not is_alive(pid), "the end of Valdorn")
            self.puppets.wait_for_none()

    def test_quit_starts_no_fleet(self):
        host = self.host()
        self.act("quit")
        wait_until(lambda: not self.owner(), "nobody on the bus")
        spend(0.5)
        self.assertEqual((self.puppets.pids(), host.items), ([], []))
        self.assertFalse(self.owner())
        self.assertEqual(self.desktop.windows(), {})

    def test_quit_ends_what_a_killed_instance_has_left(self):
        program, _ = self.start_with_item()
        self.puppets.wait_for_one()
        kill(program.process.pid, signal.SIGKILL)
        program.wait_for_end()
        self.act("quit")
        self.puppets.wait_for_none()
        self.assertEqual(len(self.puppets.pids()), 1)

    def test_the_fleet_waits_for_what_is_asked_and_not_for_ever(self):
        host = self.host()
        self.bus.StartServiceByName(ID, dbus.UInt32(0))
        self.started_by_bus()
        stays_true(lambda: not self.puppets.pids() and not host.items, "no fleet", 0.7)
        self.puppets.wait_for_one()
        host.wait_for_item()


class TokenTest(ActingCase):
    """On Wayland it takes a token to come in front of another program."""

    make_desktop = WaylandDesktop

    def test_the_token_of_the_click_brings_the_window_to_the_front(self):
        self.puppet_runners({})
        self.start_with_item()
        self.act("log")
        self.desktop.wait_for_active(LOG.title)
        self.work_elsewhere()
        # Nobody has given it leave.
        self.act("log")
        spend(0.5)
        self.assertEqual(self.desktop.focused(), SETTINGS.title)
        self.act("log", DESKTOP_STARTUP_ID=activation_token(self.desktop))
        self.desktop.wait_for_active(LOG.title, 5)


if __name__ == "__main__":
    unittest.main()
